#pragma once

#include "flow/TXFlowInterfaces.h"
#include "install/TXUnarchiver.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

// Turns a downloaded disk image into an installed and, if wanted, running product: unarchive, copy, launch. Started and
// ended on the main thread; each step works on a thread of its own and keeps the controller alive. An end is one turn
// of the main thread: the stage is over, the download's private folder is gone, the delegate is told.
class TXInstallController final : public TXInstallStage,
                                  public TXUnarchiverDelegate,
                                  public std::enable_shared_from_this<TXInstallController> {
public:
    explicit TXInstallController(std::shared_ptr<TXInstallControllerDelegate> withDelegate);

    void startInstallArchiveAtURL(const foundation::URL& url) override;
    void abortInstallArchive() override;
    bool installInProgress() const override;
    bool isLaunching() const override { return _launching; }

    const std::shared_ptr<TXInstallControllerDelegate>& delegate() const { return _delegate; }
    void setDelegate(std::shared_ptr<TXInstallControllerDelegate> newDelegate) { _delegate = std::move(newDelegate); }

    // The archive; its string form is the file's path.
    const std::optional<foundation::URL>& localURL() const { return _localURL; }
    void setLocalURL(std::optional<foundation::URL> url) { _localURL = std::move(url); }

    // The folder that holds the archive's contents; absent before they are copied out. Written on the extraction thread
    // before success is posted, read on the copy thread that success starts.
    const std::optional<std::string>& extractedPath() const { return _extractedPath; }
    void setExtractedPath(std::optional<std::string> path) { _extractedPath = std::move(path); }

    void unarchiverDidCopyContentAtPath(const std::string& path) override;
    void unarchiverDidFinish(TXUnarchiver& unarchiver) override;
    void unarchiverDidFail(TXUnarchiver& unarchiver) override;

private:
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
    void endInstallation();
    void removeTmpDirectoryForDownload() const;
    void schedule(Handler handler, std::optional<foundation::Error> error);
    static void closeRunningProduct();

    bool _installInProgress = false;
    bool _launching = false;
    std::shared_ptr<TXInstallControllerDelegate> _delegate;
    std::optional<foundation::URL> _localURL;
    std::optional<std::string> _extractedPath;
};
