#include "platform/qtcore/SettingsText.h"

#include "foundation/Text.h"
#include "platform/posix/FileDescriptor.h"

#include <QSettings>
#include <QStringList>
#include <QVariant>

#include <array>
#include <atomic>
#include <ctime>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

// QSettings does not read a file again while its name, size and time are the same, and two changes can be closer
// together than file times tell. It is therefore given a file in memory whose time is never the same twice.
FileDescriptor makeMemoryFile(const std::string& bytes) {
    static std::atomic<std::time_t> count = 0;
    FileDescriptor file(::memfd_create("settings", MFD_CLOEXEC));
    const std::time_t time = ++count;
    const std::array<struct timespec, 2> times{{{time, 0}, {time, 0}}};
    if (!file.isOpen() || ::write(file.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
        ::futimens(file.get(), times.data()) != 0) {
        return {};
    }
    return file;
}

} // namespace

std::optional<std::map<std::string, std::string>> parseSettings(const std::string& bytes) {
    if (bytes.find('\0') != std::string::npos || !foundation::isValidUtf8(bytes)) {
        return std::nullopt;
    }
    const FileDescriptor file = makeMemoryFile(bytes);
    if (!file.isOpen()) {
        return std::nullopt;
    }
    const QSettings settings(QStringLiteral("/proc/self/fd/%1").arg(file.get()), QSettings::IniFormat);
    std::map<std::string, std::string> values;
    for (const QString& key : settings.allKeys()) {
        const QVariant value = settings.value(key);
        if (value.metaType() == QMetaType::fromType<QStringList>()) {
            values[key.toStdString()] = value.toStringList().join(QStringLiteral(", ")).toStdString();
        } else if (value.canConvert<QString>()) {
            values[key.toStdString()] = value.toString().toStdString();
        }
    }
    return settings.status() == QSettings::NoError ? std::optional(values) : std::nullopt;
}

} // namespace platform
