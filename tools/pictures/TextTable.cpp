#include "tools/pictures/TextTable.h"

#include "foundation/StringsTable.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

const std::filesystem::path resources = TOLVIX_RESOURCES;

} // namespace

std::vector<std::string> TextTable::languages() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(resources))
        if (entry.path().extension() == ".lproj")
            found.push_back(entry.path().stem().string());
    std::sort(found.begin(), found.end());
    return found;
}

TextTable::TextTable(const std::string& language) : language_(language) {
    std::ifstream file(resources / (language + ".lproj") / "Localizable.strings", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    auto texts = foundation::parseStringsTable(bytes);
    if (!texts)
        throw std::runtime_error("no texts for " + language);
    texts_ = *std::move(texts);
}

const std::string& TextTable::text(const std::string& key) const {
    return texts_.at("MAC_LAUNCHER_" + key);
}
