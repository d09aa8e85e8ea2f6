#include "platform/linux/hdiutil/SevenZip.h"

#include "foundation/PathString.h"
#include "platform/linux/Environment.h"
#include "platform/linux/PathFacts.h"
#include "platform/linux/hdiutil/Failure.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string_view>

namespace hdiutil {
namespace {

constexpr int oldestVersion = 25;
constexpr const char* imagePath = "/proc/self/fd/0";

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

// The rest of every line that begins with the key.
std::vector<std::string> valuesOf(const std::string& text, const std::string& key) {
    std::vector<std::string> values;
    for (const std::string& line : split(text, '\n'))
        if (line.starts_with(key))
            values.push_back(line.substr(key.size()));
    return values;
}

std::vector<std::string> candidateFolders() {
    std::vector<std::string> folders;
    folders.push_back(foundation::path::deletingLastPathComponent(platform::linkTarget("/proc/self/exe")));
    folders.insert(folders.end(), {"/usr/bin", "/usr/local/bin"});
    for (const std::string& folder : split(platform::environment::value("PATH"), ':'))
        if (folder.starts_with('/') && std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(folder);
    return folders;
}

// The version in a banner such as "7-Zip (z) 26.02 (x64) : ..." or "7-Zip [64] 16.02 : ...".
std::optional<std::string> bannerVersion(const std::string& output) {
    for (const std::string& line : split(output, '\n')) {
        if (!line.starts_with("7-Zip"))
            continue;
        for (const std::string& word : split(line.substr(5), ' '))
            if (!word.empty() && std::isdigit(static_cast<unsigned char>(word.front())))
                return word;
    }
    return std::nullopt;
}

std::optional<std::string> versionOf(const std::string& path, Interruption& interruption) {
    return bannerVersion(Program{path, {}, -1, "/"}.run(interruption).output);
}

// Only these lead to the volume, so that an archive is not taken for an image because of its name.
std::string formatSwitch(const DiskImage& image) {
    return image.isPacked() ? "-t*:r.dmg" : "-t*:r";
}

// The last type that was opened is the file system; above it there may only be an image and partition maps.
FileSystem fileSystemOf(const std::string& output) {
    static const std::vector<std::string> containers = {"Dmg", "GPT", "APM", "MBR"};
    std::vector<std::string> types = valuesOf(output, "Type = ");
    const std::string innermost = types.empty() ? "" : types.back();
    if (!types.empty())
        types.pop_back();
    const bool isNested = std::all_of(types.begin(), types.end(), [&](const std::string& type) {
        return std::find(containers.begin(), containers.end(), type) != containers.end();
    });
    if (isNested && innermost == "HFS")
        return FileSystem::Hfs;
    if (isNested && innermost == "APFS")
        return FileSystem::Apfs;
    if (isNested && innermost == "Iso")
        return FileSystem::Iso9660;
    throw Failure("the image holds no volume that can be read");
}

// The first complaint about the system or about something inside the image, for the user's information. Error number 1
// is how 7-Zip prints an inner failure without a number.
std::string detailOf(const std::string& errors) {
    for (const std::string& line : split(errors, '\n')) {
        const std::size_t number = line.find("errno=");
        const bool isComplaint = number != std::string::npos || line.starts_with("ERROR: ");
        if (!isComplaint || line.ends_with(imagePath) || line.find("errno=1 ") != std::string::npos)
            continue;
        return " (" + line.substr(line.find(": ", number != std::string::npos ? number : 0) + 2) + ")";
    }
    return {};
}

// The line is left out for a single file.
std::optional<std::size_t> fileCount(const std::string& output) {
    const std::vector<std::string> counts = valuesOf(output, "Files: ");
    if (counts.empty())
        return std::nullopt;
    return std::strtoul(counts.back().c_str(), nullptr, 10);
}

// The entries of a listing, by key. Those of the volume follow the line of dashes, with an empty line after each.
std::vector<std::map<std::string, std::string>> listedEntries(const std::string& listing) {
    constexpr std::string_view separator = " = ";
    std::vector<std::map<std::string, std::string>> entries;
    bool isBehindHeader = false;
    bool isInEntry = false;
    for (const std::string& line : split(listing, '\n')) {
        const std::size_t at = line.find(separator);
        if (line.starts_with("----------")) {
            isBehindHeader = true;
        } else if (line.empty()) {
            isInEntry = false;
        } else if (isBehindHeader && at != std::string::npos) {
            if (!isInEntry)
                entries.emplace_back();
            isInEntry = true;
            entries.back()[line.substr(0, at)] = line.substr(at + separator.size());
        }
    }
    return entries;
}

// Of a text such as "2026-11-23 13:55:55", perhaps with parts of a second.
std::optional<std::time_t> timeOf(const std::string& text) {
    std::tm parts{};
    if (::strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &parts) == nullptr)
        return std::nullopt;
    return ::timegm(&parts);
}

} // namespace

SevenZip::SevenZip(Interruption& interruption) : interruption_(interruption) {
    std::string unfit;
    for (const char* name : {"7zz", "7z"}) {
        for (const std::string& folder : candidateFolders()) {
            const std::string path = folder + "/" + name;
            if (!platform::isExecutableFile(path))
                continue;
            const std::optional<std::string> version = versionOf(path, interruption);
            if (version && std::atoi(version->c_str()) >= oldestVersion) {
                path_ = path;
                return;
            }
            if (unfit.empty())
                unfit = " (" + path + " is " + (version ? "version " + *version : "something else") + ")";
        }
    }
    throw Failure("could not find 7-Zip " + std::to_string(oldestVersion) + " or newer" + unfit);
}

Extraction SevenZip::extract(const DiskImage& image, int folder) const {
    // The image comes as standard input: its name can neither be taken for a switch or a pattern nor point to something
    // else by now. The working folder is named by a link, so that every absolute link target gets the same known prefix
    // and no path grows with the mount point's. No pattern leaves anything out, because it would do so at other places
    // of other file systems too. The switch for links lets targets with ".." through; links are made last, so nothing
    // is ever written through one.
    const std::vector<std::string> arguments = {
        "x",  "-y",     "-bd", "-bsp0", "-bb0", "-snld20", "-sns-", formatSwitch(image), std::string("-o") + linkPrefix,
        "--", imagePath};
    const ProgramResult result =
        Program{path_, arguments, image.descriptor(), "/proc/self/fd/" + std::to_string(folder)}.run(interruption_);
    if (result.status != 0)
        throw Failure("the volume could not be read" + detailOf(result.errors));
    return {fileSystemOf(result.output), fileCount(result.output)};
}

std::vector<ListedLink> SevenZip::links(const DiskImage& image) const {
    const ProgramResult result = runOn(image, {"l", "-slt", formatSwitch(image), "--", imagePath});
    if (result.status != 0)
        throw Failure("the volume could not be listed" + detailOf(result.errors));
    std::vector<ListedLink> links;
    for (const auto& entry : listedEntries(result.output)) {
        const auto valueOf = [&entry](const char* key) {
            const auto found = entry.find(key);
            return found == entry.end() ? std::string() : found->second;
        };
        const std::string mode = valueOf("Mode");
        if (!mode.empty() && std::string_view("bcps").find(mode.front()) != std::string_view::npos)
            throw Failure("the image holds a device, pipe or socket");
        if (!mode.starts_with('l'))
            continue;
        ListedLink link{valueOf("Path"), std::nullopt, std::nullopt, timeOf(valueOf("Modified"))};
        if (const std::string target = valueOf("Symbolic Link"); !target.empty())
            link.target = target;
        if (const std::string size = valueOf("Size"); link.target)
            link.length = link.target->size();
        else if (!size.empty())
            link.length = std::strtoul(size.c_str(), nullptr, 10);
        links.push_back(std::move(link));
    }
    return links;
}

std::string SevenZip::targets(const DiskImage& image, const std::vector<std::string>& paths) const {
    // A link's data is its target. After the two dashes no path is a switch or a list, and with the switch before them
    // none is a pattern.
    std::vector<std::string> arguments = {"x", "-so", "-spd", formatSwitch(image), "--", imagePath};
    arguments.insert(arguments.end(), paths.begin(), paths.end());
    const ProgramResult result = runOn(image, std::move(arguments));
    if (result.status != 0)
        throw Failure("the links of the volume could not be read" + detailOf(result.errors));
    return result.output;
}

ProgramResult SevenZip::runOn(const DiskImage& image, std::vector<std::string> arguments) const {
    return Program{path_, std::move(arguments), image.descriptor(), "/"}.run(interruption_);
}

} // namespace hdiutil
