#pragma once

#include "platform/Authorization.h"
#include "tests/support/FakeFiles.h"

#include <algorithm>
#include <map>
#include <new>
#include <utility>

// Administrator rights over the files in memory. Tools that end well do their work; commands are counted from 1.
class FakeAuthorization final : public platform::Authorization {
public:
    explicit FakeAuthorization(FakeFiles& files) : files_(files) {}

    std::int32_t create(std::shared_ptr<platform::AuthorizationRef>& authorization) override {
        ++requests;
        if (denials-- > 0)
            return denied;
        if (status != success)
            return status;
        authorization = std::make_shared<platform::AuthorizationRef>();
        held_ = authorization;
        return success;
    }

    bool executeWithPrivileges(platform::AuthorizationRef& /*authorization*/, const std::string& tool,
                               const std::vector<std::string>& arguments) override {
        const auto isCut = [](const std::string& word) { return word.find('\0') != std::string::npos; };
        if (tool.empty() || tool.front() != '/' || isCut(tool) ||
            std::any_of(arguments.begin(), arguments.end(), isCut))
            return false;
        events.emplace_back("run");
        commands.push_back(tool);
        for (const std::string& argument : arguments)
            commands.back() += " " + argument;
        if (static_cast<int>(commands.size()) == unstartable)
            return false;
        if (static_cast<int>(commands.size()) == unthinkable)
            throw std::bad_alloc();
        isRunning_ = true;
        if (result() != 0)
            return true;
        if (tool == "/bin/rm")
            files_.removeTree(arguments.at(1));
        if (tool == "/bin/mv")
            files_.moveTree(arguments.at(1), arguments.at(2));
        if (observer)
            observer(commands.back());
        return true;
    }

    std::optional<int> wait() override {
        events.emplace_back("wait");
        return std::exchange(isRunning_, false) ? result() : std::nullopt;
    }

    std::shared_ptr<void> useDefaultChildSignal() override {
        events.emplace_back("default");
        return {nullptr, [this](void*) { events.emplace_back("restore"); }};
    }

    bool isHeld() const { return !held_.expired(); }

    int denials = 0;                                          // how many requests are denied first
    std::int32_t status = success;                            // the answer after them
    std::map<int, std::optional<int>> waitResults;            // by command; the others end with 0
    int unstartable = 0;                                      // the command that cannot be started
    int unthinkable = 0;                                      // the command that throws
    std::function<void(const std::string& command)> observer; // sees each command that has done its work
    int requests = 0;
    std::vector<std::string> commands; // tool and arguments with blanks between
    std::vector<std::string> events;   // "default", "run", "wait" and "restore", in order

private:
    // How the last command ended.
    std::optional<int> result() const {
        const auto found = waitResults.find(static_cast<int>(commands.size()));
        return found == waitResults.end() ? 0 : found->second;
    }

    FakeFiles& files_;
    bool isRunning_ = false;
    std::weak_ptr<platform::AuthorizationRef> held_;
};
