#include "platform/qtcore/PreferencesFile.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/qtcore/SettingsText.h"

#include <QFile>
#include <QLockFile>
#include <QSettings>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr std::size_t largestFile = 1024UL * 1024;
constexpr int lockWaitMilliseconds = 2000;
constexpr int mostFilesAside = 1000;

bool makeFolder(const std::string& path) {
    if (path.empty() || isFolder(path)) {
        return !path.empty();
    }
    return makeFolder(foundation::path::deletingLastPathComponent(path)) &&
           (::mkdir(path.c_str(), 0700) == 0 || isFolder(path));
}

bool flush(const std::string& path) {
    const FileDescriptor item(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return item.isOpen() && ::fsync(item.get()) == 0;
}

// A new file beside the real one that goes away by itself unless it takes that one's place.
class Replacement {
public:
    explicit Replacement(const std::string& path)
        : name_(path + ".XXXXXX"), file_(::mkostemp(name_.data(), O_CLOEXEC)) {}
    ~Replacement() {
        if (file_.isOpen()) {
            ::unlink(name_.c_str());
        }
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    bool write(const std::string& bytes, const std::map<std::string, std::optional<std::string>>& changes) {
        if (!file_.isOpen() || ::write(file_.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            return false;
        }
        QSettings settings(QFile::decodeName(name_.c_str()), QSettings::IniFormat);
        for (const auto& [key, value] : changes) {
            if (value) {
                settings.setValue(QString::fromStdString(key), QString::fromStdString(*value));
            } else {
                settings.remove(QString::fromStdString(key));
            }
        }
        settings.sync();
        return settings.status() == QSettings::NoError && ::chmod(name_.c_str(), 0600) == 0 && flush(name_);
    }

    std::optional<std::map<std::string, std::string>> values() const {
        const auto bytes = readRegularFile(name_, largestFile);
        return bytes ? parseSettings(*bytes) : std::nullopt;
    }

    bool takePlaceOf(const std::string& path) {
        if (std::rename(name_.c_str(), path.c_str()) != 0) {
            return false;
        }
        file_.close();
        flush(foundation::path::deletingLastPathComponent(path));
        return true;
    }

private:
    std::string name_;
    FileDescriptor file_;
};

} // namespace

PreferencesFile::PreferencesFile(const std::string& path) : path_(resolvedPath(path)) {
    if (path_.empty()) {
        path_ = path;
    }
}

PreferencesFile::Content PreferencesFile::read() const {
    struct stat status {};
    if (::lstat(path_.c_str(), &status) != 0) {
        return {errno == ENOENT ? State::Missing : State::Inaccessible, {}, {}};
    }
    const auto bytes = S_ISREG(status.st_mode) ? readRegularFile(path_, largestFile + 1) : std::nullopt;
    if (!bytes) {
        return {State::Inaccessible, {}, {}};
    }
    auto values = bytes->size() <= largestFile ? parseSettings(*bytes) : std::nullopt;
    if (!values) {
        return {State::Broken, {}, {}};
    }
    return {State::Readable, *bytes, std::move(*values)};
}

std::optional<std::string> PreferencesFile::value(const std::string& key) const {
    const Content content = read();
    const auto found = content.values.find(key);
    return found == content.values.end() ? std::nullopt : std::optional(found->second);
}

bool PreferencesFile::apply(const std::map<std::string, std::optional<std::string>>& changes) const {
    if (!makeFolder(foundation::path::deletingLastPathComponent(path_))) {
        return false;
    }
    // The same lock that other Qt programs take when they write their settings.
    QLockFile lock(QFile::decodeName(path_.c_str()) + QStringLiteral(".lock"));
    return lock.tryLock(lockWaitMilliseconds) && replace(changes);
}

bool PreferencesFile::replace(const std::map<std::string, std::optional<std::string>>& changes) const {
    const Content content = read();
    if (content.state == State::Inaccessible) {
        return false;
    }
    std::map<std::string, std::string> expected = content.values;
    for (const auto& [key, value] : changes) {
        expected.erase(key);
        if (value) {
            expected.emplace(key, *value);
        }
    }
    Replacement replacement(path_);
    // On a full disk QSettings reports success for half a file, so what was written is read back.
    return replacement.write(content.bytes, changes) && replacement.values() == expected &&
           (content.state != State::Broken || keepAside()) && replacement.takePlaceOf(path_);
}

// The broken file gets a second name first, so that at no moment there is no file.
bool PreferencesFile::keepAside() const {
    const std::string name = path_ + ".broken";
    for (int number = 1; number <= mostFilesAside; ++number) {
        const std::string free = number == 1 ? name : name + '.' + std::to_string(number);
        if (::link(path_.c_str(), free.c_str()) == 0) {
            return true;
        }
        if (errno != EEXIST) {
            return false;
        }
    }
    return false;
}

} // namespace platform
