#pragma once

#include <map>
#include <string>
#include <vector>

// The program's own texts, as the user interface is to show them.
class TextTable {
public:
    // All languages that there is a table for, such as "pt-BR".
    static std::vector<std::string> languages();

    // Throws std::runtime_error when there is no table or it cannot be read.
    explicit TextTable(const std::string& language);

    const std::string& language() const { return language_; }

    // The text of a key without its common beginning "MAC_LAUNCHER_"; throws std::out_of_range.
    const std::string& text(const std::string& key) const;

private:
    std::string language_;
    std::map<std::string, std::string> texts_;
};
