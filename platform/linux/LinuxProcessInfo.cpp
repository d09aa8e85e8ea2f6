#include "platform/linux/LinuxProcessInfo.h"

#include "foundation/PathString.h"
#include "platform/linux/Environment.h"
#include "platform/linux/PathFacts.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <utility>

#include <pwd.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr double referenceDate = 978307200;

std::string withoutTrailingSlashes(std::string path) {
    while (!path.empty() && path.back() == '/')
        path.pop_back();
    return path;
}

// The variable's value when it is an absolute path, without trailing slashes; otherwise empty.
std::string absolutePathVariable(const char* name) {
    std::string value = environment::value(name);
    return value.starts_with('/') ? withoutTrailingSlashes(std::move(value)) : std::string();
}

// A real folder of this user that nobody else may enter.
bool isPrivateFolder(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & 077) == 0;
}

// Whoever may change the entries of a folder can put another one in the place of what this program makes there; the
// sticky bit keeps everybody but the owners from it. This holds for every folder on the way.
bool isSafeWay(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return false;
    const bool isOurs = status.st_uid == ::geteuid() || status.st_uid == 0;
    const bool isGuarded = (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 || (status.st_mode & S_ISVTX) != 0;
    return isOurs && isGuarded && (path == "/" || isSafeWay(foundation::path::deletingLastPathComponent(path)));
}

// The folder that the path leads to, without links and detours, if files of this user are safe in it; or empty.
std::string safeFolder(const std::string& path) {
    std::string folder = path.empty() ? path : resolvedPath(path);
    return !folder.empty() && ::access(folder.c_str(), W_OK | X_OK) == 0 && isSafeWay(folder) ? folder : std::string();
}

// The first of the usual places that is safe.
std::string baseForTemporaryFiles() {
    for (const std::string& place : {absolutePathVariable("TMPDIR"), std::string("/tmp"), std::string("/var/tmp"),
                                     absolutePathVariable("XDG_RUNTIME_DIR"), absolutePathVariable("HOME")})
        if (std::string folder = safeFolder(place); !folder.empty())
            return folder;
    return "/tmp";
}

// In a folder that others use too, the usual name can be taken by somebody else; a new name never is.
std::string makePrivateFolder(const std::string& base) {
    std::string stem = base + "/tolvix-installer-" + std::to_string(::geteuid());
    if (::mkdir(stem.c_str(), 0700) == 0 || errno == EEXIST) {
        if (isPrivateFolder(stem))
            return stem;
    }
    std::string unique = stem + "-XXXXXX";
    return ::mkdtemp(unique.data()) != nullptr ? unique : base;
}

std::string userName() {
    const struct passwd* const entry = ::getpwuid(::geteuid());
    return entry != nullptr ? entry->pw_name : std::to_string(::geteuid());
}

// Where Qt will make a folder for sockets because the session has none. Empty when nothing is going to be made.
std::string socketFolderToCome() {
    if (!environment::value("XDG_RUNTIME_DIR").empty())
        return {};
    std::string base = absolutePathVariable("TMPDIR");
    std::string folder = (base.empty() ? "/tmp" : base) + "/runtime-" + userName();
    struct stat status {};
    return ::lstat(folder.c_str(), &status) != 0 && errno == ENOENT ? folder : std::string();
}

} // namespace

LinuxProcessInfo::LinuxProcessInfo(std::vector<std::string> arguments, std::string root)
    : arguments_(std::move(arguments)), root_(withoutTrailingSlashes(std::move(root))),
      socketFolder_(socketFolderToCome()) {}

OperatingSystemVersion LinuxProcessInfo::operatingSystemVersion() {
    struct utsname system {};
    OperatingSystemVersion version;
    if (::uname(&system) != 0)
        return version;
    const char* position = &system.release[0];
    for (long* number : {&version.major, &version.minor, &version.patch}) {
        char* end = nullptr;
        *number = std::strtol(position, &end, 10);
        if (end == position || *end != '.')
            break;
        position = end + 1;
    }
    return version;
}

std::string LinuxProcessInfo::globallyUniqueString() {
    struct timespec now {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const auto nanoseconds =
        static_cast<unsigned long long>(now.tv_sec) * 1'000'000'000ULL + static_cast<unsigned long long>(now.tv_nsec);
    std::array<char, 17> counter{};
    std::snprintf(counter.data(), counter.size(), "%016llX", nanoseconds);
    return makeUUID().value_or("") + '-' + std::to_string(::getpid()) + '-' + counter.data();
}

std::optional<std::string> LinuxProcessInfo::makeUUID() {
    std::array<std::uint8_t, 16> bytes{};
    while (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        if (errno != EINTR)
            return std::nullopt;
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10)
            text += '-';
        text += digits[bytes[index] >> 4U];
        text += digits[bytes[index] & 0x0FU];
    }
    return text;
}

std::string LinuxProcessInfo::temporaryDirectory() {
    const std::lock_guard lock(mutex_);
    // Checked each time: a cleaner may have removed the folder, and anybody could have made it again since.
    if (temporaryFolder_.empty() || !isPrivateFolder(temporaryFolder_)) {
        const std::string base = baseForTemporaryFiles();
        temporaryFolderIsOwn_ = !isPrivateFolder(base);
        temporaryFolder_ = temporaryFolderIsOwn_ ? makePrivateFolder(base) : base;
    }
    return temporaryFolder_ + '/';
}

void LinuxProcessInfo::removeEmptyTemporaryFolder() {
    const std::lock_guard lock(mutex_);
    if (temporaryFolderIsOwn_ && isPrivateFolder(temporaryFolder_))
        ::rmdir(temporaryFolder_.c_str());
    if (!socketFolder_.empty() && isPrivateFolder(socketFolder_))
        ::rmdir(socketFolder_.c_str());
}

std::string LinuxProcessInfo::homeDirectory() {
    if (std::string home = absolutePathVariable("HOME"); !home.empty())
        return home;
    std::vector<char> buffer(16384);
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
        return found->pw_dir;
    return "/";
}

std::string LinuxProcessInfo::systemPath(const std::string& path) {
    return root_.empty() ? path : foundation::path::appendingPathComponent(root_, path);
}

double LinuxProcessInfo::secondsSinceReferenceDate() {
    struct timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<double>(now.tv_sec) - referenceDate + static_cast<double>(now.tv_nsec) / 1e9;
}

} // namespace platform
