#pragma once

#include "platform/qt/QtInterface.h"

#include <QApplication>

#include <array>
#include <string>

class QTranslator;

namespace platform {

// The Qt application object, set up for this program.
class QtApplicationObject {
public:
    explicit QtApplicationObject(const QtInterfaceOptions& options);

    // From now on Qt's own texts, such as those of a text's menu, are in the program's language. Reads a file, so only
    // what can show such texts asks for them.
    void showStandardTexts();

private:
    // Qt keeps references to the command line. It is not the person's, because Qt would take the options that it knows,
    // and their values, out of that.
    std::array<std::string, 3> words_;
    std::array<char*, 4> arguments_;
    int argumentCount_;
    QApplication application_;
    // Null until the texts are asked for. Belongs to the application object.
    QTranslator* standardTexts_ = nullptr;
};

} // namespace platform
