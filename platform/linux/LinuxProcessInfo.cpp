#include "platform/linux/LinuxProcessInfo.h"

#include "foundation/PathString.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <system_error>
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
    while (!path.empty() && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

// The variable's value when it is an absolute path, without trailing slashes; otherwise empty.
std::string absolutePathVariable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value == '/' ? withoutTrailingSlashes(value) : std::string();
}

// A real folder of this user that nobody else may enter.
bool isPrivateFolder(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & 077) == 0;
}

bool isUsableFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && ::access(path.c_str(), W_OK | X_OK) == 0;
}

// In a folder that others use too, the usual name can be taken by somebody else; a new name never is.
std::string makePrivateFolder(const std::string& base) {
    std::string stem = base + "/tolvix-installer-" + std::to_string(::geteuid());
    if (::mkdir(stem.c_str(), 0700) == 0 || errno == EEXIST) {
        if (isPrivateFolder(stem)) {
            return stem;
        }
    }
    std::string unique = stem + "-XXXXXX";
    return ::mkdtemp(unique.data()) != nullptr ? unique : base;
}

} // namespace

LinuxProcessInfo::LinuxProcessInfo(std::vector<std::string> arguments, std::string root)
    : arguments_(std::move(arguments)), root_(withoutTrailingSlashes(std::move(root))) {}

OperatingSystemVersion LinuxProcessInfo::operatingSystemVersion() {
    struct utsname system {};
    OperatingSystemVersion version;
    if (::uname(&system) != 0) {
        return version;
    }
    const char* position = &system.release[0];
    for (long* number : {&version.major, &version.minor, &version.patch}) {
        char* end = nullptr;
        *number = std::strtol(position, &end, 10);
        if (end == position || *end != '.') {
            break;
        }
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
    return makeUUID() + '-' + std::to_string(::getpid()) + '-' + counter.data();
}

std::string LinuxProcessInfo::makeUUID() {
    std::array<std::uint8_t, 16> bytes{};
    while (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "getrandom");
        }
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) {
            text += '-';
        }
        text += digits[bytes[index] >> 4U];
        text += digits[bytes[index] & 0x0FU];
    }
    return text;
}

std::string LinuxProcessInfo::temporaryDirectory() {
    const std::lock_guard lock(mutex_);
    // Checked each time: a cleaner may have removed the folder, and anybody could have made it again since.
    if (temporaryFolder_.empty() || !isPrivateFolder(temporaryFolder_)) {
        std::string base = absolutePathVariable("TMPDIR");
        if (base.empty() || !isUsableFolder(base)) {
            base = "/tmp";
        }
        temporaryFolderIsOwn_ = !isPrivateFolder(base);
        temporaryFolder_ = temporaryFolderIsOwn_ ? makePrivateFolder(base) : base;
    }
    return temporaryFolder_ + '/';
}

void LinuxProcessInfo::removeEmptyTemporaryFolder() {
    const std::lock_guard lock(mutex_);
    if (temporaryFolderIsOwn_ && isPrivateFolder(temporaryFolder_)) {
        ::rmdir(temporaryFolder_.c_str());
    }
}

std::string LinuxProcessInfo::homeDirectory() {
    if (std::string home = absolutePathVariable("HOME"); !home.empty()) {
        return home;
    }
    std::vector<char> buffer(16384);
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return found->pw_dir;
    }
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
