#include "platform/qt/ScriptFonts.h"

#include <QLocale>

#include <memory>

#include <fontconfig/fontconfig.h>

namespace platform {

// Qt reads the list of fonts in the same way, and only once in a process: asking here first costs nothing more.
bool ScriptFonts::canShow(const std::string& language) {
    const QLocale locale(QString::fromStdString(language));
    if (locale.script() == QLocale::LatinScript)
        return true;
    const QByteArray name = locale.name().toLower().replace('_', '-').toLatin1();
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> wanted(
        FcPatternBuild(nullptr, FC_LANG, FcTypeString, name.constData(), nullptr), &FcPatternDestroy);
    const std::unique_ptr<FcObjectSet, decltype(&FcObjectSetDestroy)> told(FcObjectSetBuild(FC_FAMILY, nullptr),
                                                                           &FcObjectSetDestroy);
    const std::unique_ptr<FcFontSet, decltype(&FcFontSetDestroy)> fonts(FcFontList(nullptr, wanted.get(), told.get()),
                                                                        &FcFontSetDestroy);
    // Where the fonts cannot be listed, nothing speaks against the language.
    return fonts == nullptr || fonts->nfont > 0;
}

} // namespace platform
