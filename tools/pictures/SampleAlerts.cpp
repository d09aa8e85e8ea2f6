#include "tools/pictures/SampleAlerts.h"

using platform::Alert;
using platform::AlertStyle;

namespace {

Alert failure(const TextTable& texts, const std::string& stage, bool offersDownload) {
    Alert alert;
    alert.style = AlertStyle::Critical;
    alert.messageText = texts.text("FAILED_" + stage + "_TITLE");
    alert.informativeText = texts.text("FAILED_" + stage + "_DESCRIPTION");
    if (offersDownload) {
        alert.buttons.push_back(texts.text("FAILED_WARNING_MANUAL_DONWLOAD"));
    }
    alert.buttons.push_back(texts.text("FAILED_WARNING_QUIT"));
    alert.escapeButton = alert.quitButton = alert.buttons.size() - 1;
    return alert;
}

} // namespace

Alert SampleAlerts::quitWhileBusy(const TextTable& texts) {
    return {.style = AlertStyle::Warning,
            .messageText = texts.text("INCOMPLETE_WARNING_TITLE"),
            .informativeText = texts.text("INCOMPLETE_WARNING_DESCRIPTION"),
            .buttons = {texts.text("INCOMPLETE_WARNING_CONTINUE"), texts.text("INCOMPLETE_WARNING_QUIT")},
            .escapeButton = 0,
            .quitButton = 1};
}

Alert SampleAlerts::checkFailed(const TextTable& texts) {
    return failure(texts, "CHECK", false);
}

Alert SampleAlerts::downloadFailed(const TextTable& texts) {
    return failure(texts, "DOWNLOAD", true);
}

Alert SampleAlerts::installFailed(const TextTable& texts) {
    return failure(texts, "INSTALL", true);
}

Alert SampleAlerts::storeEdition(const TextTable& texts) {
    return {.style = AlertStyle::Warning,
            .messageText = texts.text("MACAPPSTORE_WARNING_TITLE"),
            .informativeText = texts.text("MACAPPSTORE_WARNING_DESCRIPTION"),
            .buttons = {texts.text("MACAPPSTORE_WARNING_OPEN"), texts.text("MACAPPSTORE_WARNING_QUIT"),
                        texts.text("MACAPPSTORE_WARNING_MANUAL_DONWLOAD")},
            .escapeButton = 1,
            .quitButton = 1};
}

std::vector<Alert> SampleAlerts::all(const TextTable& texts) {
    return {quitWhileBusy(texts), checkFailed(texts), downloadFailed(texts), installFailed(texts), storeEdition(texts)};
}
