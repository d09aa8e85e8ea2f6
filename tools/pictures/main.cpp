// Draws the window and every alert, in several languages and colours, on one sheet; and the two pictures of the
// introduction. Usage: screenshots REPOSITORY OUTPUT-FOLDER, or screenshots --icons REPOSITORY to draw the icons anew.

#include "tools/pictures/ContactSheet.h"
#include "tools/pictures/IconFiles.h"
#include "tools/pictures/OffscreenDisplay.h"
#include "tools/pictures/Palettes.h"
#include "tools/pictures/Pictures.h"

#include <QApplication>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

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
            {"English, high contrast, 14 pt", {"en", Palettes::highContrast(), 14}},
            {"English, light, 150 %", {"en", light}, 1.5},
            {"English, light, 200 %", {"en", light}, 2},
            {"Hebrew, dark, 200 %", {"he", dark}, 2}};
}

const QImage& named(const std::vector<Pictures::Picture>& pictures, const QString& name) {
    return std::find_if(pictures.begin(), pictures.end(), [&](const auto& picture) { return picture.name == name; })
        ->image;
}

bool drawIntroduction(const QDir& repository) {
    const QDir images(repository.filePath("docs/images"));
    const auto light = Pictures::take({"en", Palettes::light()}, 2);
    const auto dark = Pictures::take({"en", Palettes::dark()}, 2);
    return QDir().mkpath(images.path()) &&
           ContactSheet::onDesktop(named(light, "download"), "#dfe5ea").save(images.filePath("window-light.png")) &&
           ContactSheet::onDesktop(named(dark, "alert-0"), "#14171a").save(images.filePath("alert-dark.png"));
}

bool drawContactSheet(const QDir& output) {
    ContactSheet sheet;
    for (const NamedLook& look : looks()) {
        sheet.addRow(look.name, Pictures::take(look.look, look.scale));
    }
    OffscreenDisplay::use({1920, 1080});
    int argumentCount = 0;
    const QGuiApplication application(argumentCount, nullptr);
    return QDir().mkpath(output.path()) && sheet.draw().save(output.filePath("contact-sheet.png"));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: screenshots REPOSITORY OUTPUT-FOLDER | screenshots --icons REPOSITORY\n";
        return EXIT_FAILURE;
    }
    bool done = false;
    if (std::string(argv[1]) == "--icons") {
        done = IconFiles::render(QDir(argv[2]));
    } else {
        done = drawIntroduction(QDir(argv[1])) && drawContactSheet(QDir(argv[2]));
    }
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
