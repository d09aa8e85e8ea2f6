#include "foundation/URL.h"

#include <gtest/gtest.h>

// Which texts make a URL, and the parts that the stages read.

using foundation::URL;
using Text = std::optional<std::string>;

TEST(URLTest, TakesURLsApart) {
    const std::tuple<const char*, Text, const char*> rows[] = {
        {"", {}, ""},
        {"https://h", "", ""},
        {"https://h/a/", "/a", "a"},
        {"https://h/a//", "/a/", ""},
        {"https://u@h:8080/a?b=/c/d.dmg#/e", "/a", "a"},
        {"https://h/a%20b.dmg", "/a b.dmg", "a b.dmg"},
        {"https://h/..%2F..%2Fx.dmg", "/../../x.dmg", "../../x.dmg"},
        {"https://h/%2e%2e", "/..", ".."},
        {"http://h/%C3%A9.dmg", "/\xC3\xA9.dmg", "\xC3\xA9.dmg"},
        {"http://h/%E9.dmg", {}, ""},
        {"file:///%E9.dmg", "/\xE9.dmg", "\xE9.dmg"},
        {"/a/b:c.dmg", "/a/b:c.dmg", "b:c.dmg"},
        {"/tmp/a?b/c.dmg", "/tmp/a", "a"},
        {"foo:bar", {}, ""},
        {"macappstore://h/app/id42", "/app/id42", "id42"}};
    for (const auto& [text, path, last] : rows) {
        SCOPED_TRACE(text);
        const auto url = URL::withString(text);
        ASSERT_TRUE(url);
        EXPECT_EQ(url->absoluteString(), text);
        EXPECT_EQ(url->path(), path);
        EXPECT_EQ(url->lastPathComponent(), last);
    }
    EXPECT_EQ(URL::withString("HTTPS+x://h/")->scheme(), "HTTPS+x");
    EXPECT_EQ(URL::withString("/a:b")->scheme(), "");
    EXPECT_EQ(URL::withString("https://[::1]:80/[x]")->absoluteString(), "https://[::1]:80/%5Bx%5D");
}

TEST(URLTest, RefusesCharactersThatNoURLMayHold) {
    for (const char* text : {"a b", " https://h/", "https://h/\xC3\xA9", "%zz", "https://h/a%", "https://h/a%4",
                             "https://h/a#b#c", "\"", "<", ">", "\\", "^", "`", "{", "|", "}", "a\nb", "\x7F"})
        EXPECT_EQ(URL::withString(text), std::nullopt) << text;
    EXPECT_EQ(URL::withString(std::string_view("a\0b", 3)), std::nullopt);
}

TEST(URLTest, FileURLsHoldAnyPath) {
    const std::string path = "/a b/\xC3\xA9/c;d?e#f%41[g]\xFF.dmg";
    const URL url = URL::fileURLWithPath(path);
    EXPECT_EQ(url.absoluteString(), "file:///a%20b/%C3%A9/c%3Bd%3Fe%23f%2541%5Bg%5D%FF.dmg");
    EXPECT_EQ(url.path(), path);
    EXPECT_EQ(url.scheme(), "file");
}
