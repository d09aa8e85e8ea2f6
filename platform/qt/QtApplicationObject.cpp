#include "platform/qt/QtApplicationObject.h"

#include "platform/qt/Accessibility.h"
#include "platform/qt/ResourceIcon.h"

#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace platform {

QtApplicationObject::QtApplicationObject(const QtInterfaceOptions& options)
    : words_{options.identifier, "-platform", options.plugIns}, arguments_{words_[0].data(), words_[1].data(),
                                                                           words_[2].data(), nullptr},
      argumentCount_(options.plugIns.empty() ? 1 : 3), application_(argumentCount_, arguments_.data()) {
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
    if (standardTexts_ != nullptr || locale.language() == QLocale::English)
        return;
    standardTexts_ = new QTranslator(&application_);
    if (standardTexts_->load(locale, "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(standardTexts_);
}

} // namespace platform
