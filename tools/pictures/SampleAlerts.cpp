#include "tools/pictures/SampleAlerts.h"

#include "app/InstallerAlerts.h"
#include "platform/Platform.h"

namespace {

// Knows the texts alone.
class TableBundle final : public platform::Bundles {
public:
    explicit TableBundle(const TextTable& texts) : texts_(texts) { platform::current().bundles = this; }
    TableBundle(const TableBundle&) = delete;
    TableBundle& operator=(const TableBundle&) = delete;
    ~TableBundle() override { platform::current().bundles = nullptr; }

    std::string mainBundlePath() override { return {}; }
    std::optional<foundation::Value> objectForInfoDictionaryKey(const std::string& /*key*/) override { return {}; }
    std::optional<foundation::Value::Dictionary> bundleInformation(const std::string& /*path*/) override { return {}; }
    std::string localizedString(const std::string& key, const std::string& /*value*/) override {
        return texts_.text(key.substr(std::string("MAC_LAUNCHER_").size()));
    }

private:
    const TextTable& texts_;
};

} // namespace

std::vector<platform::Alert> SampleAlerts::all(const TextTable& texts) {
    using InstallerAlerts::FailedStage;
    const TableBundle bundle(texts);
    return {InstallerAlerts::quitWhileBusy(), InstallerAlerts::failure(FailedStage::Check, false),
            InstallerAlerts::failure(FailedStage::Download, true), InstallerAlerts::failure(FailedStage::Install, true),
            InstallerAlerts::storeEdition(true)};
}
