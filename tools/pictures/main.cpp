// Draws the window and every alert, in several languages, colours and sizes, on one sheet. Usage: screenshots
// OUTPUT-FOLDER; screenshots --icons REPOSITORY draws the icons anew; screenshots --grab FILE X Y WIDTH HEIGHT takes a
// part of the display as it is.

#include "tools/pictures/ContactSheet.h"
#include "tools/pictures/IconFiles.h"
#include "tools/pictures/OffscreenDisplay.h"
#include "tools/pictures/Palettes.h"
#include "tools/pictures/Pictures.h"

#include <QApplication>
#include <QPixmap>
#include <QScreen>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace {

struct NamedLook {
    const char* name;
    Pictures::Look look;
    double scale = 1;
};

std::vector<NamedLook> looks() {
    const QPalette light = Palettes::light();
    const QPalette dark = Palettes::dark();
    return {{"English, light", {"en", light}},
            {"English, dark", {"en", dark}},
            {"Arabic, light, right to left", {"ar", light}},
            {"German, dark", {"de", dark}},
            {"Japanese, light", {"ja", light}},
            {"Simplified Chinese, dark", {"zh-Hans", dark}},
            {"Thai, light, 18 pt", {"th", light, 18}},
            {"German, light, 24 pt", {"de", light, 24}},
            {"English, light, 36 pt", {"en", light, 36}},
            {"German, light, 20 pt, screen of 640 x 360", {"de", light, 20, {640, 360}}},
            {"Serbian in Latin letters, light", {"sr-Latn", light}},
            {"Korean, light", {"ko", light}},
            {"English, high contrast, 14 pt", {"en", Palettes::highContrast(), 14}},
            {"English, high contrast on white", {"en", Palettes::highContrastLight()}},
            {"English, yellow on black", {"en", Palettes::yellowOnBlack()}},
            {"English, light, 150 %", {"en", light}, 1.5},
            {"English, light, 200 %", {"en", light}, 2},
            {"Hebrew, dark, 200 %", {"he", dark}, 2}};
}

bool drawContactSheet(const QDir& output) {
    ContactSheet sheet;
    for (const NamedLook& look : looks())
        sheet.addRow(look.name, Pictures::take(look.look, look.scale));
    OffscreenDisplay::use({1920, 1080});
    int argumentCount = 0;
    const QGuiApplication application(argumentCount, nullptr);
    return QDir().mkpath(output.path()) && sheet.draw().save(output.filePath("contact-sheet.png"));
}

bool grab(const QString& file, const QRect& part) {
    int argumentCount = 0;
    const QGuiApplication application(argumentCount, nullptr);
    return QGuiApplication::primaryScreen()->grabWindow(0, part.x(), part.y(), part.width(), part.height()).save(file);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv, argv + argc);
    bool done = false;
    if (argc == 2)
        done = drawContactSheet(QDir(argv[1]));
    else if (argc == 3 && words[1] == "--icons")
        done = IconFiles::render(QDir(argv[2]));
    else if (argc == 7 && words[1] == "--grab")
        done = grab(argv[2], QRect(std::stoi(words[3]), std::stoi(words[4]), std::stoi(words[5]), std::stoi(words[6])));
    else
        std::cerr << "usage: screenshots OUTPUT-FOLDER | --icons REPOSITORY | --grab FILE X Y WIDTH HEIGHT\n";
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
