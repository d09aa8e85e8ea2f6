#pragma once

#include <QDBusConnection>

#include <chrono>
#include <optional>
#include <string>

namespace platform {

// The person's own message bus.
class SessionBus {
public:
    // Empty when there is none yet. Leaving the search to the library could start one.
    static std::string address();

    // If it is there already: none is started for this.
    static std::optional<QDBusConnection> connection();

    // Where a bus accepts connections and then never answers, libraries wait for it without end. Finds out within the
    // time, and has Qt take such a bus for one that is missing, for as long as the process runs. False then. Main
    // thread, before anything else asks Qt for the bus and before other threads run.
    static bool isUsable(std::chrono::milliseconds patience);

    // Whether the bus at the address says anything within the time. True for one that cannot be reached at all: no
    // library waits for that.
    static bool answers(const std::string& address, std::chrono::milliseconds patience);
};

} // namespace platform
