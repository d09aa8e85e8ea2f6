#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

namespace tests {

// A new empty folder that goes away with everything in it.
class TestFolder {
public:
    TestFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "platform-test-XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string path(const std::string& name = {}) const { return name.empty() ? path_ : path_ + '/' + name; }

    // Makes the file and the folders above it; its path.
    std::string write(const std::string& name, const std::string& bytes, bool executable = false) const {
        const std::filesystem::path file = path(name);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        if (executable)
            std::filesystem::permissions(file, std::filesystem::perms(0755));
        return file;
    }

    std::string read(const std::string& name) const {
        std::ostringstream bytes;
        bytes << std::ifstream(path(name), std::ios::binary).rdbuf();
        return bytes.str();
    }

private:
    std::string path_;
};

// Environment variables for the duration of a test; an absent value removes the variable.
class TestEnvironment {
public:
    TestEnvironment(std::initializer_list<std::pair<const char*, std::optional<std::string>>> variables) {
        for (const auto& [name, value] : variables) {
            const char* previous = std::getenv(name);
            previous_[name] = previous == nullptr ? std::nullopt : std::optional<std::string>(previous);
            set(name, value);
        }
    }
    ~TestEnvironment() {
        for (const auto& [name, value] : previous_)
            set(name, value);
    }
    TestEnvironment(const TestEnvironment&) = delete;
    TestEnvironment& operator=(const TestEnvironment&) = delete;

private:
    static void set(const std::string& name, const std::optional<std::string>& value) {
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }

    std::map<std::string, std::optional<std::string>> previous_;
};

} // namespace tests
