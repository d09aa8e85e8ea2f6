#pragma once

#include "foundation/Error.h"
#include "foundation/URL.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

// How the flow and its stages speak to each other. Every message to a delegate arrives on the main thread. A stage
// keeps its delegate alive; a running stage keeps itself alive and reports its end even when the flow has dropped it.

class TXCheckControllerDelegate {
public:
    virtual ~TXCheckControllerDelegate() = default;
    virtual void checkWillStart() = 0;
    // Exactly one of these two ends a check.
    virtual void checkDidEndWithURL(const foundation::URL& url, const std::string& withVersion) = 0;
    virtual void checkDidFailWithError(const std::optional<foundation::Error>& error) = 0;
};

class TXDownloadControllerDelegate {
public:
    virtual ~TXDownloadControllerDelegate() = default;
    // The local URL is absent when there is no place for the file; the download then fails.
    virtual void downloadWillStartAtURL(const std::optional<foundation::URL>& url) = 0;
    // A percentage, neither rounded nor limited.
    virtual void downloadProgress(double progress) = 0;
    // Exactly one of these two ends a download.
    virtual void downloadDidEndAtURL(const foundation::URL& url) = 0;
    virtual void downloadDidFailWithError(const std::optional<foundation::Error>& error) = 0;
};

class TXInstallControllerDelegate {
public:
    virtual ~TXInstallControllerDelegate() = default;
    virtual void installWillStart() = 0;
    virtual void installProgress(double progress) = 0;
    virtual void installDidEnd() = 0;
    // Can come more than once for one installation.
    virtual void installDidFailWithError(const std::optional<foundation::Error>& error) = 0;
    virtual void launchDidFailWithError(const foundation::Error& error) = 0;
};

class TXInstallerLogControllerDelegate {
public:
    virtual ~TXInstallerLogControllerDelegate() = default;
    virtual void installerLogRequestWillStart() = 0;
    // Once for each start, when its request has ended, successfully or not.
    virtual void installerLogRequestDidFinish() = 0;
};

// The three stages. A start while the stage is in progress is ignored. Aborting does nothing: a started stage always
// runs to its end and reports it.

class TXCheckStage {
public:
    virtual ~TXCheckStage() = default;
    // The feed query URL; a check without one fails.
    virtual void startCheckAtURL(const std::optional<foundation::URL>& url) = 0;
    virtual void abortChecking() = 0;
    virtual bool checkInProgress() const = 0;
};

class TXDownloadStage {
public:
    virtual ~TXDownloadStage() = default;
    virtual void startDownloadArchiveAtURL(const foundation::URL& url) = 0;
    virtual void abortDownloadArchive() = 0;
    virtual bool downloadInProgress() const = 0;
};

class TXInstallStage {
public:
    virtual ~TXInstallStage() = default;
    // The downloaded file's URL, whose string form is the file's path.
    virtual void startInstallArchiveAtURL(const foundation::URL& url) = 0;
    virtual void abortInstallArchive() = 0;
    virtual bool installInProgress() const = 0;
    // Whether the product is in place and being started: the stage ends by itself in a moment.
    virtual bool isLaunching() const { return false; }
};

// Makes a stage with its delegate, once per run.
struct TXStageFactory {
    std::function<std::shared_ptr<TXCheckStage>(std::shared_ptr<TXCheckControllerDelegate>)> makeCheckController;
    std::function<std::shared_ptr<TXDownloadStage>(std::shared_ptr<TXDownloadControllerDelegate>)>
        makeDownloadController;
    std::function<std::shared_ptr<TXInstallStage>(std::shared_ptr<TXInstallControllerDelegate>)> makeInstallController;
};
