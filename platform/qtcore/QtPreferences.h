#pragma once

#include "platform/Preferences.h"
#include "platform/Threads.h"

#include <chrono>
#include <future>
#include <map>
#include <set>
#include <string>

namespace platform {

// Settings in one INI file per domain, "<domain>.conf", readable by other Qt programs. Values come back as texts. A
// domain that could name a file outside the folder has no values and cannot be written.
class QtPreferences : public Preferences {
public:
    // The folder need not exist. `threads` must outlive this object; writing goes on a thread of its own.
    QtPreferences(std::string folder, Threads& threads) : folder_(std::move(folder)), threads_(threads) {}

    // The folder where programs of this user keep their settings.
    static std::string userConfigurationFolder(const std::string& homeDirectory);

    std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) override;

    void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                  const std::string& domain) override;

    // A file that is no settings file is kept as "<domain>.conf.broken", or with a number after that, before it is
    // replaced. On failure nothing has changed.
    void synchronize(const std::string& domain) override;

    // For the end of the program, when the main thread takes no more steps: writes what is still to be written, and
    // waits for a write that is under way, but no longer than the limit.
    void finishWriting(std::chrono::milliseconds limit);

private:
    using Changes = std::map<std::string, std::optional<std::string>>;

    void writeNext();
    void written(const std::string& domain, const Changes& changes);

    const std::string folder_;
    Threads& threads_;
    // What is not on disk yet.
    std::map<std::string, Changes> pending_;
    // Domains whose turn to be written comes; one at a time, so that no older change overtakes a newer one.
    std::set<std::string> due_;
    bool writing_ = false;
    std::future<void> lastWrite_;
};

} // namespace platform
