#pragma once

#include "foundation/PathString.h"
#include "platform/Workspace.h"
#include "tests/support/FakeFiles.h"

#include <algorithm>
#include <set>
#include <string_view>

// A desktop that opens nothing and remembers what it was asked.
class FakeWorkspace final : public platform::Workspace {
public:
    explicit FakeWorkspace(FakeFiles& files) : files_(files) {}

    bool openURL(const foundation::URL& url) override {
        opened.push_back(url.absoluteString());
        return true;
    }

    bool launchApplication(const std::string& path) override {
        request("launch " + path);
        return launchSucceeds && files_.has(path);
    }

    bool selectFile(const std::string& path, const std::string& root) override {
        request("reveal " + path + " in '" + root + "'");
        return revealSucceeds && files_.has(path);
    }

    bool destroyFiles(const std::string& folder, const std::vector<std::string>& names) override {
        const auto isPlain = [](const std::string& name) {
            return !name.empty() && name != "." && name != ".." &&
                   name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
        };
        if (folder.empty() || !std::all_of(names.begin(), names.end(), isPlain))
            return false;
        bool all = true;
        for (const std::string& name : names) {
            const std::string path = foundation::path::appendingPathComponent(folder, name);
            all = indestructible.count(path) == 0 && files_.removeItem(path) && all;
        }
        return all;
    }

    std::vector<platform::RunningApplication> runningApplications(const std::string& bundleIdentifier) override {
        return bundleIdentifier == runningIdentifier ? running : std::vector<platform::RunningApplication>();
    }

    void terminate(const platform::RunningApplication& application) override {
        request("terminate " + std::to_string(application.processId));
        if (refusals-- > 0)
            return;
        std::erase_if(running, [&](const auto& one) {
            return one.processId == application.processId && one.startTime == application.startTime;
        });
    }

    std::vector<std::string> opened;
    std::vector<std::string> requests;
    std::vector<platform::RunningApplication> running;
    std::string runningIdentifier = "example.tolvix.desktop";
    std::function<void(const std::string& request)> observer; // sees each request
    int refusals = 0;                                         // how many requests to quit come to nothing
    bool launchSucceeds = true;
    bool revealSucceeds = true;
    std::set<std::string> indestructible;

private:
    void request(const std::string& text) {
        requests.push_back(text);
        if (observer)
            observer(text);
    }

    FakeFiles& files_;
};
