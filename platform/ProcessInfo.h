#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

struct OperatingSystemVersion {
    long major = 0;
    long minor = 0;
    long patch = 0;
};

// What a process knows of itself and its surroundings. Any thread.
class ProcessInfo {
public:
    virtual ~ProcessInfo() = default;

    // The whole command line, the program's own path included.
    virtual std::vector<std::string> arguments() = 0;

    virtual OperatingSystemVersion operatingSystemVersion() = 0;

    // A text that no other call on any machine returns; usable as a file name.
    virtual std::string globallyUniqueString() = 0;

    // A new random identifier: 36 characters, upper case. Absent when the system has no random numbers to give.
    virtual std::optional<std::string> makeUUID() = 0;

    // A folder for this user's temporary files, closed to other users; with a trailing slash.
    virtual std::string temporaryDirectory() = 0;

    virtual std::string homeDirectory() = 0;

    // Where a fixed absolute path of the system lies for this program: the path itself, unless the bundle names another
    // root.
    virtual std::string systemPath(const std::string& path) = 0;

    // Seconds since 1 January 2001, 00:00 UTC.
    virtual double secondsSinceReferenceDate() = 0;
};

// The person's language and region. Main thread.
class Locale {
public:
    virtual ~Locale() = default;

    // Upper-case region code such as "FR", absent when the locale names none.
    virtual std::optional<std::string> countryCode() = 0;

    // Languages such as "fr-CA", best first; never empty.
    virtual std::vector<std::string> preferredLanguages() = 0;
};

// The console. Any thread; one message stays one message.
class Console {
public:
    virtual ~Console() = default;

    virtual void log(const std::string& message) = 0;
};

} // namespace platform
