#pragma once

#include "app/TXFlowInterfaces.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

// Finds out which disk image to install: the one shipped beside the installer, or the one that the binaries service
// names. Main thread; the question itself is asked on a background thread of its own.
class TXCheckController final : public TXCheckStage, public std::enable_shared_from_this<TXCheckController> {
public:
    explicit TXCheckController(std::shared_ptr<TXCheckControllerDelegate> withDelegate);

    void startCheckAtURL(const std::optional<foundation::URL>& url) override;
    void abortChecking() override;
    bool checkInProgress() const override;

    // What the last check found; kept after its end.
    const std::optional<foundation::URL>& downloadURL() const { return _downloadURL; }
    const std::optional<std::string>& downloadVersion() const { return _downloadVersion; }

    // The last part of the URL's path that consists of digits and dots alone.
    static std::optional<std::string> guessVersionFromURL(const std::optional<foundation::URL>& url);

    // Where a disk image shipped beside the installer lies; computed, not checked.
    static foundation::URL localArchivePath();

    // Whether something is at the file URL, in a folder of exactly that name.
    static bool isLocalArchiveAt(const foundation::URL& url, const std::optional<std::string>& inFolderNamed);

private:
    void startCheck(const std::optional<foundation::URL>& url);
    bool checkIfLocalArchiveExists();
    void readAnswer(const foundation::Value& answer);
    void checkFinished();
    void checkFailed(const std::optional<foundation::Error>& error);
    void scheduleCheckFinished();
    void scheduleCheckFailed(std::optional<foundation::Error> error);

    std::atomic<bool> _checkInProgress = false;
    std::shared_ptr<TXCheckControllerDelegate> delegate;
    std::optional<foundation::URL> feedURL;
    // Written by the background step before it schedules the end, read by the end alone.
    std::optional<foundation::URL> _downloadURL;
    std::optional<std::string> _downloadVersion;
};
