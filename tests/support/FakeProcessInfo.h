#pragma once

#include "platform/ProcessInfo.h"

// Surroundings that never change, and names that can be foretold.
class FakeProcessInfo final : public platform::ProcessInfo {
public:
    std::vector<std::string> arguments() override { return commandLine; }
    platform::OperatingSystemVersion operatingSystemVersion() override { return version; }
    std::string globallyUniqueString() override { return uniqueString; }
    std::string makeUUID() override { return "00000000-0000-4000-8000-00000000000" + std::to_string(++uuids); }
    std::string temporaryDirectory() override { return temporary; }
    std::string homeDirectory() override { return home; }
    std::string systemPath(const std::string& path) override { return path; }
    double secondsSinceReferenceDate() override { return seconds; }

    std::vector<std::string> commandLine{"/Downloads/Tolvix Installer.app/Contents/MacOS/TolvixInstaller"};
    platform::OperatingSystemVersion version{10, 9, 5};
    std::string uniqueString = "UNIQUE";
    int uuids = 0;
    std::string temporary = "/tmp/me/";
    std::string home = "/Users/me";
    double seconds = 400000000.1234;
};
