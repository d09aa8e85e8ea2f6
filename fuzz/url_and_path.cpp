#include "foundation/PathString.h"
#include "foundation/PercentEscape.h"
#include "foundation/URL.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>

namespace {

namespace path = foundation::path;

void checkURL(const std::string& text) {
    const auto url = foundation::URL::withString(text);
    if (!url)
        return;
    // What was accepted once is accepted again, and stays what it is.
    const auto again = foundation::URL::withString(url->absoluteString());
    require(again.has_value() && *again == *url);
    require(text.compare(0, url->scheme().size(), url->scheme()) == 0);
    (void)url->path();
    (void)url->lastPathComponent();
}

void checkFileURL(const std::string& text) {
    const std::string absolute = "/" + text;
    const auto url = foundation::URL::fileURLWithPath(absolute);
    require(foundation::URL::withString(url.absoluteString()) == url);
    auto expected = absolute;
    if (expected.size() > 1 && expected.back() == '/')
        expected.pop_back();
    require(url.path() == expected);
}

void checkPath(const std::string& text) {
    const std::string name = path::lastPathComponent(text);
    require(name == "/" || name.find('/') == std::string::npos);
    require(path::deletingLastPathComponent(text).size() <= text.size() + 1);
    require(path::pathExtension(text).find('/') == std::string::npos);
    (void)path::deletingPathExtension(text);
    (void)path::pathComponents(text);
    (void)path::expandingTilde(text, "/home/a");
    // A name that is put behind a folder is found there again.
    if (!name.empty() && name != "/")
        require(path::lastPathComponent(path::appendingPathComponent("/a", name)) == name);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkURL(text);
    checkFileURL(text);
    checkPath(text);
    if (const auto escaped = foundation::addingPercentEscapes(text))
        require(foundation::removingPercentEscapes(*escaped) == text);
    return 0;
}
