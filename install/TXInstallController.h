#pragma once

#include "app/TXFlowInterfaces.h"
#include "install/TXUnarchiver.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

// Turns a downloaded disk image into an installed and, if wanted, running product: unarchive, copy, launch. Started and
// ended on the main thread; each step works on a thread of its own and keeps the controller alive.
class TXInstallController final : public TXInstallStage,
                                  public TXUnarchiverDelegate,
                                  public std::enable_shared_from_this<TXInstallController> {
public:
    explicit TXInstallController(std::shared_ptr<TXInstallControllerDelegate> withDelegate);

    void startInstallArchiveAtURL(const foundation::URL& url) override;
    void abortInstallArchive() override;
    bool installInProgress() const override;

    void unarchiverDidCopyContentAtPath(const std::string& path) override;
    void unarchiverDidFinish(TXUnarchiver& unarchiver) override;
    void unarchiverDidFail(TXUnarchiver& unarchiver) override;

private:
    using Report = std::function<void(TXInstallControllerDelegate& delegate)>;
    using Handler = void (TXInstallController::*)(const std::optional<foundation::Error>& error);

    void startUnarchive();
    void unarchiveFinished();
    void unarchiveFailed(const std::optional<foundation::Error>& error);
    void startCopy();
    void copyFinished();
    void copyFailed(const std::optional<foundation::Error>& error);
    void startLaunch();
    void launchFinished();
    void launchFailed(const std::optional<foundation::Error>& error);
    void endInstallation(Report report);
    static void removeTmpDirectoryForDownload(const foundation::URL& url);
    void schedule(Handler handler, std::optional<foundation::Error> error);
    static void closeRunningProduct();

    bool _installInProgress = false;
    std::shared_ptr<TXInstallControllerDelegate> delegate;
    std::optional<foundation::URL> localURL;
    // Written on the extraction thread before success is posted, read on the copy thread that success starts.
    std::optional<std::string> extractedPath;
};
