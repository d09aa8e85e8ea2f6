#pragma once

#include "flow/TXFlowInterfaces.h"

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

    const std::shared_ptr<TXCheckControllerDelegate>& delegate() const { return _delegate; }

    // The address of the running check; absent otherwise.
    const std::optional<foundation::URL>& feedURL() const { return _feedURL; }

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
    // What a background step found: both parts, or the error of a check that failed. It travels to the main thread as a
    // whole, so that checks that overlap do not mix theirs.
    struct Outcome {
        std::optional<foundation::URL> downloadURL;
        std::optional<std::string> downloadVersion;
        std::optional<foundation::Error> error;
    };

    // The background step.
    static Outcome startCheck(const std::optional<foundation::URL>& url);
    static std::optional<Outcome> checkIfLocalArchiveExists();
    static Outcome readAnswer(const foundation::Value& answer);
    void checkEnded(const Outcome& outcome);
    void checkFinished();
    void checkFailed(const std::optional<foundation::Error>& error);
    void scheduleEnd(Outcome outcome);

    std::atomic<bool> _checkInProgress = false;
    std::shared_ptr<TXCheckControllerDelegate> _delegate;
    std::optional<foundation::URL> _feedURL;
    std::optional<foundation::URL> _downloadURL;
    std::optional<std::string> _downloadVersion;
};
