#pragma once

#include <string>
#include <string_view>
#include <vector>

// Rules for path texts. Nothing here looks at the disk; "." and ".." are ordinary names; runs of slashes count as one.
namespace foundation::path {

// "/tmp/a.dmg" gives "a.dmg", "/" gives "/", "" gives "".
std::string lastPathComponent(std::string_view path);

// "/tmp/a.dmg" gives "/tmp", "/tmp" gives "/", "a" gives "".
std::string deletingLastPathComponent(std::string_view path);

// "/tmp/a.dmg" gives "dmg"; a leading or trailing dot starts no extension.
std::string pathExtension(std::string_view path);

// "/tmp/a.dmg" gives "/tmp/a".
std::string deletingPathExtension(std::string_view path);

// Joins with exactly one slash; a component never replaces the path.
std::string appendingPathComponent(std::string_view path, std::string_view component);

// Adds "." and the extension; an empty extension changes nothing.
std::string appendingPathExtension(std::string_view path, std::string_view extension);

// "/a/b" gives "/", "a", "b"; a trailing slash gives a last "/".
std::vector<std::string> pathComponents(std::string_view path);

// Whether a text can be a path at all: not empty, and no zero byte that would cut it short.
bool isPath(std::string_view text);

// Whether the name is "." or "..".
bool isDots(std::string_view name);

// Whether the text names an item within a folder, and nothing outside of it.
bool isPlainName(std::string_view text);

// A leading "~" becomes the home folder.
std::string expandingTilde(std::string_view path, std::string_view home);

} // namespace foundation::path
