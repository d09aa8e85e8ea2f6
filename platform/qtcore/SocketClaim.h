#pragma once

#include "platform/SingleInstance.h"
#include "platform/posix/FileDescriptor.h"

#include <QSocketNotifier>

#include <memory>

namespace platform {

// A claim is a Unix socket whose name stands for the user and the folder. The name lies in no file system: it goes with
// the process, and nothing is left behind. Connecting to it is all that the second process has to say.
class SocketClaim final : public SingleInstance {
public:
    bool claim(const std::string& folder, std::function<void()> activated) override;

    // Whether another process of this user holds the folder; it is told, as by a claim.
    static bool isHeld(const std::string& folder);

private:
    void listen(FileDescriptor socket, std::function<void()> activated);

    FileDescriptor socket_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace platform
