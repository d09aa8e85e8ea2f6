#pragma once

#include "flow/TXFlowInterfaces.h"
#include "telemetry/TXInstallerLogRequest.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Turns each notable point of a run into an event for the log service. One shared instance, made at launch, which takes
// the locale, the versions and whether the product is already there as they are at that moment. Main thread.
class TXInstallerLogController final : public TXInstallerLogRequestDelegate,
                                       public std::enable_shared_from_this<TXInstallerLogController> {
public:
    using Precisions = std::map<std::string, std::string>;

    explicit TXInstallerLogController(std::shared_ptr<TXInstallerLogControllerDelegate> withDelegate);

    // Makes the shared instance anew.
    static std::shared_ptr<TXInstallerLogController>
    initSharedTXInstallerLogControllerWithDelegate(std::shared_ptr<TXInstallerLogControllerDelegate> delegate);

    // The shared instance, or null before it was made.
    static std::shared_ptr<TXInstallerLogController> sharedTXInstallerLogController();

    // Takes the shared arguments and precisions of all events afresh from the system and the configuration.
    void setup();

    // Where events are posted: made once per process. Absent where the log host makes no URL.
    static const std::optional<foundation::URL>& installerLogURL();

    // Whether events are printed on the console.
    static bool showLogs();

    // The product version that later events carry; an absent one changes nothing.
    void setVersion(const std::optional<std::string>& version);

    // Posts one event with the step code, or without one when it is absent. The precisions are added to its content;
    // `flush` makes no difference.
    void installerLogToServerWithCode(const std::optional<std::string>& code);
    void installerLogToServerWithCode(const std::optional<std::string>& code,
                                      const std::optional<Precisions>& precisions, bool flush);

    void requestDidFinish(const TXInstallerLogRequest& request) override;

private:
    using Pairs = std::vector<std::pair<std::string, std::optional<std::string>>>;

    static Pairs installationArguments();

    std::map<std::string, std::string> sharedArguments;
    Precisions sharedPrecisions;
    std::shared_ptr<TXInstallerLogControllerDelegate> delegate;
};
