#pragma once

#include <map>
#include <optional>
#include <string>

namespace platform {

// One INI file of settings. Other programs may change it at any time.
class PreferencesFile {
public:
    // A change to one key: the new text, or nothing to remove it, and whether the key was absent when it was last read.
    struct Change {
        std::optional<std::string> value;
        bool isFirst = false;
    };
    using Changes = std::map<std::string, Change>;

    // The file and its folder need not exist. A link to a file stays a link.
    explicit PreferencesFile(const std::string& path);

    // All bytes of the file; none when it does not exist. Nothing when it is no readable regular file or no honest
    // settings file is as large.
    std::optional<std::string> read() const;

    // Applies the changes to what is in the file by now, and gives its new bytes. A first value gives way to one that
    // another program has stored in the meantime, so that all programs go on with the same. The old or the new file
    // stands there whole, whatever happens, and nothing else. Nothing when that was not possible.
    std::optional<std::string> apply(const Changes& changes) const;

private:
    std::string path_;
};

} // namespace platform
