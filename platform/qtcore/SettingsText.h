#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

// The bytes of an INI file as Qt programs write their settings. Only the lines of the keys that are changed here
// change; every other byte stays, whether it makes sense or not. The keys are those outside of any named section.
class SettingsText {
public:
    explicit SettingsText(std::string bytes) : bytes_(std::move(bytes)) {}

    const std::string& bytes() const { return bytes_; }

    // The text stored for the key, of its last line where there are several; a list comes with ", " between its
    // entries. Nothing when there is none or it cannot be understood.
    std::optional<std::string> value(const std::string& key) const;

    // Stores the text; removes the key when absent. Bytes that are no UTF-8 are stored as marks.
    void set(const std::string& key, const std::optional<std::string>& value);

private:
    struct Line {
        std::size_t begin = 0;
        // After its line break.
        std::size_t end = 0;
    };

    std::string_view textOf(const Line& line) const;
    std::vector<Line> generalLines() const;
    std::vector<Line> linesOf(const std::string& key) const;
    void append(const std::string& line);

    std::string bytes_;
};

} // namespace platform
