#include "platform/qt/QtAlerts.h"

#include "platform/qt/AlertSheet.h"
#include "platform/qt/MainWindow.h"
#include "platform/qt/QtApplicationObject.h"

namespace platform {

void QtAlerts::show(const Alert& alert) {
    applicationObject_.showStandardTexts();
    auto* sheet = new AlertSheet(alert, window_.answerGuard());
    QObject::connect(sheet, &AlertSheet::answered, &window_, [this](int returnCode) { answer(returnCode); });
    window_.showSheet(sheet);
}

void QtAlerts::allEnded(bool programEnds) {
    if (programEnds)
        window_.hide();
    window_.removeSheet();
}

} // namespace platform
