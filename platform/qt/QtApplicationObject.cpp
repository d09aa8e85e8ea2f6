#include "platform/qt/QtApplicationObject.h"

#include "platform/qt/Accessibility.h"
#include "platform/qt/ResourceIcon.h"

#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace platform {

QtApplicationObject::QtApplicationObject(const QtInterfaceOptions& options)
    : name_(options.identifier), arguments_{name_.data(), nullptr}, application_(argumentCount_, arguments_.data()) {
    const QLocale locale(QString::fromStdString(options.language));
    QLocale::setDefault(locale);
    QApplication::setLayoutDirection(locale.textDirection());
    QApplication::setApplicationName(QString::fromStdString(options.name));
    QApplication::setDesktopFileName(QString::fromStdString(options.identifier));
    QApplication::setWindowIcon(ResourceIcon::named("icon", {16, 24, 32, 48, 64, 128}));
    QApplication::setQuitOnLastWindowClosed(false);
    Accessibility::install();
}

void QtApplicationObject::showStandardTexts() {
    const QLocale locale;
    if (locale.language() == QLocale::English) {
        return;
    }
    auto* translator = new QTranslator(&application_);
    textsReader_ = std::jthread([translator, locale] {
        if (translator->load(locale, "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
            QMetaObject::invokeMethod(translator, [translator] { QCoreApplication::installTranslator(translator); });
        }
    });
}

} // namespace platform
