#include "platform/qtcore/QtBundles.h"

#include "foundation/LanguageChoice.h"
#include "foundation/PathString.h"
#include "foundation/StringsTable.h"
#include "platform/linux/PathFacts.h"
#include "platform/qtcore/PropertyList.h"

#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>

namespace platform {

namespace {

using foundation::Value;
using foundation::path::appendingPathComponent;
using foundation::path::deletingLastPathComponent;

constexpr std::size_t largestFile = 4UL * 1024 * 1024;

std::optional<std::string> readWholeFile(const std::string& path) {
    auto bytes = readRegularFile(path, largestFile + 1);
    return bytes && bytes->size() <= largestFile ? bytes : std::nullopt;
}

std::string bundleOfThisProgram() {
    const std::string folder = deletingLastPathComponent(executableOfProcess("/proc/self"));
    static constexpr std::string_view inBundle = "/Contents/MacOS";
    const bool isInBundle = std::string_view(folder).ends_with(inBundle);
    return isInBundle ? folder.substr(0, folder.size() - inBundle.size()) : folder;
}

// The languages that the folder has a table for.
std::vector<std::string> languagesIn(const std::string& resources) {
    static constexpr std::string_view extension = ".lproj";
    std::vector<std::string> languages;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(resources.c_str()), &::closedir);
    while (const struct dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        const std::string_view name(&entry->d_name[0]);
        if (name.ends_with(extension))
            languages.emplace_back(name.substr(0, name.size() - extension.size()));
    }
    return languages;
}

} // namespace

QtBundles::QtBundles(std::vector<std::string> preferredLanguages, std::string mainBundlePath)
    : preferredLanguages_(std::move(preferredLanguages)),
      mainBundlePath_(mainBundlePath.empty() ? bundleOfThisProgram() : std::move(mainBundlePath)) {}

std::optional<Value> QtBundles::objectForInfoDictionaryKey(const std::string& key) {
    const Value* value = foundation::member(mainInformation(), key);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

std::optional<Value::Dictionary> QtBundles::bundleInformation(const std::string& path) {
    if (!isFolder(path))
        return std::nullopt;
    for (const char* place : {"Contents/Info.plist", "Resources/Info.plist", "Info.plist"}) {
        if (const auto bytes = readWholeFile(appendingPathComponent(path, place))) {
            const auto list = parsePropertyList(*bytes);
            return list && list->dictionary() != nullptr ? *list->dictionary() : Value::Dictionary();
        }
    }
    return Value::Dictionary();
}

std::string QtBundles::localizedString(const std::string& key, const std::string& value) {
    readTable();
    const auto found = table_.find(key);
    if (found != table_.end())
        return found->second;
    return value.empty() ? key : value;
}

std::string QtBundles::localization() {
    readTable();
    return localization_;
}

const Value::Dictionary& QtBundles::mainInformation() {
    std::call_once(informationRead_,
                   [this] { information_ = bundleInformation(mainBundlePath_).value_or(Value::Dictionary()); });
    return information_;
}

// A table that cannot be read counts as missing, and the next best language takes its place.
void QtBundles::findTable() {
    const std::string resources = appendingPathComponent(mainBundlePath_, "Contents/Resources");
    const auto development = objectForInfoDictionaryKey("CFBundleDevelopmentRegion");
    const std::string developmentLanguage =
        development && development->string() != nullptr ? *development->string() : std::string();
    std::vector<std::string> available = languagesIn(resources);
    while (const auto language = foundation::chooseLocalization(available, preferredLanguages_, developmentLanguage)) {
        const auto bytes =
            canShow_ && !canShow_(*language)
                ? std::nullopt
                : readWholeFile(appendingPathComponent(resources, *language + ".lproj/Localizable.strings"));
        if (auto table = bytes ? foundation::parseStringsTable(*bytes) : std::nullopt) {
            table_ = std::move(*table);
            localization_ = *language;
            return;
        }
        std::erase(available, *language);
    }
}

void QtBundles::readTable() {
    std::call_once(
        tableRead_, [this] { findTable(); });
}

} // namespace platform
