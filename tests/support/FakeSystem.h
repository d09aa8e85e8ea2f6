#pragma once

#include "platform/DiskImages.h"
#include "platform/ProcessInfo.h"
#include "platform/SingleInstance.h"

// Surroundings that never change, and names that can be foretold.
class FakeProcessInfo final : public platform::ProcessInfo {
public:
    std::vector<std::string> arguments() override { return commandLine; }
    platform::OperatingSystemVersion operatingSystemVersion() override { return {10, 9, 0}; }
    std::string globallyUniqueString() override {
        return uniqueTexts++ == 0 ? "UNIQUE" : "UNIQUE" + std::to_string(uniqueTexts);
    }
    std::optional<std::string> makeUUID() override {
        if (!hasRandomNumbers)
            return std::nullopt;
        const std::string number = std::to_string(++uuids_);
        return std::string("00000000-0000-4000-8000-000000000000").substr(0, 36 - number.size()) + number;
    }
    std::string temporaryDirectory() override { return "/tmp/me/"; }
    std::string homeDirectory() override { return "/Users/me"; }
    std::string systemPath(const std::string& path) override { return path; }
    double secondsSinceReferenceDate() override { return 400000000.1234; }

    std::vector<std::string> commandLine{"/Downloads/Tolvix Installer.app/Contents/MacOS/TolvixInstaller"};
    bool hasRandomNumbers = true;
    int uniqueTexts = 0; // how many were given; a test that begins again sets it back

private:
    int uuids_ = 0;
};

class FakeLocale final : public platform::Locale {
public:
    std::optional<std::string> countryCode() override { return country; }
    std::vector<std::string> preferredLanguages() override { return languages; }

    std::optional<std::string> country = "CH";
    std::vector<std::string> languages{"fr-CH", "de"};
};

class FakeConsole final : public platform::Console {
public:
    void log(const std::string& message) override { messages.push_back(message); }

    std::vector<std::string> messages;
};

// Lets one installer in; a test plays the others.
class FakeSingleInstance final : public platform::SingleInstance {
public:
    bool claim(const std::string& folder, std::function<void()> activated) override {
        claimed.push_back(folder);
        another = std::move(activated);
        return isFree;
    }

    bool isFree = true;
    std::vector<std::string> claimed;
    std::function<void()> another; // what happens when another one comes
};

class FakeDiskImages final : public platform::DiskImages {
public:
    std::string toolPath() override { return "/usr/bin/hdiutil"; }
};
