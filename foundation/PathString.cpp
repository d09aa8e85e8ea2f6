#include "foundation/PathString.h"

namespace foundation::path {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

} // namespace

std::string lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/")
        return "/";
    const auto slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string deletingLastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    if (slash == 0)
        return "/";
    return std::string(withoutTrailingSlashes(path.substr(0, slash)));
}

std::string pathExtension(std::string_view path) {
    const std::string name = lastPathComponent(path);
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0)
        return {};
    return name.substr(dot + 1);
}

std::string deletingPathExtension(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const std::string extension = pathExtension(path);
    if (extension.empty())
        return std::string(path);
    return std::string(path.substr(0, path.size() - extension.size() - 1));
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
    std::string joined(path);
    if (!component.empty()) {
        if (!joined.empty())
            joined += '/';
        joined += component;
    }
    std::string result;
    for (const char c : joined)
        if (c != '/' || result.empty() || result.back() != '/')
            result += c;
    return std::string(withoutTrailingSlashes(result));
}

std::string appendingPathExtension(std::string_view path, std::string_view extension) {
    std::string result(withoutTrailingSlashes(path));
    if (!extension.empty()) {
        result += '.';
        result += extension;
    }
    return result;
}

std::vector<std::string> pathComponents(std::string_view path) {
    std::vector<std::string> components;
    if (path.empty())
        return components;
    if (path.front() == '/')
        components.emplace_back("/");
    std::size_t at = 0;
    while (at < path.size()) {
        const auto slash = std::min(path.find('/', at), path.size());
        if (slash > at)
            components.emplace_back(path.substr(at, slash - at));
        at = slash + 1;
    }
    const bool rootAlone = components.size() == 1 && components.front() == "/";
    if (path.back() == '/' && !rootAlone)
        components.emplace_back("/");
    return components;
}

bool isPath(std::string_view text) {
    return !text.empty() && text.find('\0') == std::string_view::npos;
}

bool isDots(std::string_view name) {
    return name == "." || name == "..";
}

bool isPlainName(std::string_view text) {
    return isPath(text) && !isDots(text) && text.find('/') == std::string_view::npos;
}

std::string expandingTilde(std::string_view path, std::string_view home) {
    if (path != "~" && path.substr(0, 2) != "~/")
        return std::string(path);
    return appendingPathComponent(home, path.substr(1));
}

} // namespace foundation::path
