#pragma once

#include "platform/qt/QtInterface.h"

#include <QApplication>

#include <array>
#include <string>
#include <thread>

namespace platform {

// The Qt application object, set up for this program.
class QtApplicationObject {
public:
    explicit QtApplicationObject(const QtInterfaceOptions& options);

    // Has Qt's own texts, such as those of a text's menu, in the program's language, as soon as they are read.
    void showStandardTexts();

private:
    // Qt keeps references to both. The command line holds the program's name alone, because Qt would take the options
    // that it knows, and their values, out of the person's.
    std::string name_;
    int argumentCount_ = 1;
    std::array<char*, 2> arguments_;
    QApplication application_;
    // Looks for files, which takes its time on a busy disk.
    std::jthread textsReader_;
};

} // namespace platform
