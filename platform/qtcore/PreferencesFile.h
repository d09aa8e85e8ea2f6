#pragma once

#include <map>
#include <optional>
#include <string>

namespace platform {

// One INI file of settings. Reading never waits and never changes anything.
class PreferencesFile {
public:
    // The file and its folder need not exist.
    explicit PreferencesFile(const std::string& path);

    // The text stored for the key at this moment. Nothing when there is none or the file is no settings file.
    std::optional<std::string> value(const std::string& key) const;

    // Replaces the file by one with these changes; absent values are removed. The old or the new file stands there
    // whole, whatever happens. False when that was not possible.
    bool apply(const std::map<std::string, std::optional<std::string>>& changes) const;

private:
    enum class State { Missing, Readable, Broken, Inaccessible };
    struct Content {
        State state = State::Missing;
        std::string bytes;
        std::map<std::string, std::string> values;
    };

    Content read() const;
    bool replace(const std::map<std::string, std::optional<std::string>>& changes) const;
    bool keepAside() const;

    // Where the file really is: a link to it stays a link.
    std::string path_;
};

} // namespace platform
