#include "app/InstallerAlerts.h"

#include "ui/TXLocalizedString.h"

using platform::Alert;
using platform::AlertStyle;

namespace InstallerAlerts {

namespace {

Alert makeAlert(AlertStyle style, const std::string& subject, const std::vector<std::string>& buttonKeys) {
    Alert alert;
    alert.style = style;
    alert.messageText = TXLocalizedString(subject + "_TITLE");
    alert.informativeText = TXLocalizedString(subject + "_DESCRIPTION");
    for (const std::string& key : buttonKeys)
        alert.buttons.push_back(TXLocalizedString(key));
    return alert;
}

std::string subjectOf(FailedStage stage) {
    switch (stage) {
    case FailedStage::Check:
        return "MAC_LAUNCHER_FAILED_CHECK";
    case FailedStage::Download:
        return "MAC_LAUNCHER_FAILED_DOWNLOAD";
    case FailedStage::Install:
        break;
    }
    return "MAC_LAUNCHER_FAILED_INSTALL";
}

} // namespace

Alert quitWhileBusy() {
    Alert alert = makeAlert(AlertStyle::Warning, "MAC_LAUNCHER_INCOMPLETE_WARNING",
                            {"MAC_LAUNCHER_INCOMPLETE_WARNING_CONTINUE", "MAC_LAUNCHER_INCOMPLETE_WARNING_QUIT"});
    alert.escapeButton = 0;
    alert.quitButton = 1;
    return alert;
}

Alert failure(FailedStage stage, bool offersManualDownload) {
    std::vector<std::string> buttons;
    // Deliberate: the keys of the manual download are misspelt, in every table as well.
    if (offersManualDownload)
        buttons.emplace_back("MAC_LAUNCHER_FAILED_WARNING_MANUAL_DONWLOAD");
    buttons.emplace_back("MAC_LAUNCHER_FAILED_WARNING_QUIT");
    Alert alert = makeAlert(AlertStyle::Critical, subjectOf(stage), buttons);
    alert.escapeButton = alert.quitButton = buttons.size() - 1;
    alert.endsProgram = true;
    return alert;
}

Alert storeEdition(bool offersManualDownload) {
    std::vector<std::string> buttons{"MAC_LAUNCHER_MACAPPSTORE_WARNING_OPEN", "MAC_LAUNCHER_MACAPPSTORE_WARNING_QUIT"};
    if (offersManualDownload)
        buttons.emplace_back("MAC_LAUNCHER_MACAPPSTORE_WARNING_MANUAL_DONWLOAD");
    Alert alert = makeAlert(AlertStyle::Warning, "MAC_LAUNCHER_MACAPPSTORE_WARNING", buttons);
    alert.escapeButton = alert.quitButton = 1;
    alert.endsProgram = true;
    return alert;
}

} // namespace InstallerAlerts
