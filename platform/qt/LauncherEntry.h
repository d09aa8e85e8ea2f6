#pragma once

#include <QDBusConnection>
#include <QString>

#include <optional>

namespace platform {

// Progress on the program's entry in the desktop's dock or task bar. Desktops that know no such thing ignore it;
// without a message bus nothing happens. Nothing waits for an answer.
class LauncherEntry {
public:
    // The name of the program's desktop file, without its ending. Without a bus the entry shows nothing.
    LauncherEntry(const QString& desktopFile, std::optional<QDBusConnection> bus);
    ~LauncherEntry();
    LauncherEntry(const LauncherEntry&) = delete;
    LauncherEntry& operator=(const LauncherEntry&) = delete;

    // A share from 0 to 1; nothing takes the progress away. Sends whole per cents only.
    void setProgress(std::optional<double> share);

private:
    void send();

    QString uri_;
    QString path_;
    std::optional<QDBusConnection> bus_;
    std::optional<int> percent_;
};

} // namespace platform
