#include "foundation/MessageText.h"

#include "foundation/PathString.h"
#include "foundation/PercentEscape.h"
#include "foundation/Unicode.h"

#include <gtest/gtest.h>

#include <climits>

// The rules for path texts, numbers read from texts, descriptions and escapes.

namespace path = foundation::path;
using foundation::Error;
using foundation::Value;

TEST(PathStringTest, TakesPathsApart) {
    struct Row {
        const char* path;
        const char* last;
        const char* folder;
        const char* extension;
        const char* withoutExtension;
        std::vector<std::string> components;
    };
    const Row rows[] = {{"/tmp/a.tiff", "a.tiff", "/tmp", "tiff", "/tmp/a", {"/", "tmp", "a.tiff"}},
                        {"/tmp/", "tmp", "/", "", "/tmp", {"/", "tmp", "/"}},
                        {"/", "/", "/", "", "/", {"/"}},
                        {"", "", "", "", "", {}},
                        {"a///", "a", "", "", "a", {"a", "/"}},
                        {"/a//b.app/", "b.app", "/a", "app", "/a//b", {"/", "a", "b.app", "/"}},
                        {"a..tiff", "a..tiff", "", "tiff", "a.", {"a..tiff"}},
                        {"/x/.tiff", ".tiff", "/x", "", "/x/.tiff", {"/", "x", ".tiff"}},
                        {"/a.b/c", "c", "/a.b", "", "/a.b/c", {"/", "a.b", "c"}}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(path::lastPathComponent(row.path), row.last);
        EXPECT_EQ(path::deletingLastPathComponent(row.path), row.folder);
        EXPECT_EQ(path::pathExtension(row.path), row.extension);
        EXPECT_EQ(path::deletingPathExtension(row.path), row.withoutExtension);
        EXPECT_EQ(path::pathComponents(row.path), row.components);
    }
}

TEST(PathStringTest, JoinsWithOneSlashAndNeverReplacesThePath) {
    EXPECT_EQ(path::appendingPathComponent("/", "x"), "/x");
    EXPECT_EQ(path::appendingPathComponent("/tmp/", ""), "/tmp");
    EXPECT_EQ(path::appendingPathComponent("/tmp", "/"), "/tmp");
    EXPECT_EQ(path::appendingPathComponent("/tmp//a", "/b//c/"), "/tmp/a/b/c");
    EXPECT_EQ(path::appendingPathExtension("/a/b/", "app"), "/a/b.app");
    EXPECT_EQ(path::expandingTilde("~/Library", "/Users/me/"), "/Users/me/Library");
    EXPECT_EQ(path::expandingTilde("~other/x", "/Users/me"), "~other/x");
}

TEST(ValueTest, ReadsNumbersAndFlagsOutOfEveryKind) {
    const std::tuple<Value, std::int64_t, bool> rows[] = {{Value(" \t+200abc"), 200, true},
                                                          {Value(" -007"), -7, true},
                                                          {Value(""), 0, false},
                                                          {Value("0xC8"), 0, false},
                                                          {Value("YES"), 0, true},
                                                          {Value("No"), 0, false},
                                                          {Value("99999999999999999999"), LLONG_MAX, true},
                                                          {Value(true), 1, true},
                                                          {Value(200.7), 200, true},
                                                          {Value(-1e300), LLONG_MIN, true},
                                                          {Value(), 0, false},
                                                          {Value(Value::Array{Value("1")}), 0, false}};
    for (const auto& [value, integer, flag] : rows) {
        EXPECT_EQ(value.integerValue(), integer) << value.description();
        EXPECT_EQ(value.boolValue(), flag) << value.description();
    }
}

TEST(ValueTest, DescribesContainersReadably) {
    const Value list(Value::Array{Value(true), Value("two words")});
    const Value value(Value::Dictionary{{"b", list}, {"a key", Value("say \"hi\"\n")}, {"c", Value()}});
    EXPECT_EQ(value.description(), "{\n"
                                   "    \"a key\" = \"say \\\"hi\\\"\\n\";\n"
                                   "    b = (\n"
                                   "        1,\n"
                                   "        \"two words\"\n"
                                   "    );\n"
                                   "    c = <null>;\n"
                                   "}");
    EXPECT_EQ(Value("as it is\n").description(), "as it is\n");
}

TEST(ErrorTest, DescribesItselfOnOneLine) {
    EXPECT_EQ(Error::withDescription("D", 4002, "no file").description(),
              "Error Domain=D Code=4002 \"no file\" UserInfo={NSLocalizedDescription=no file}");
    const Error hostile{"a\x1B[2J\nb", -4, {{"message", Value("\xC2\x9B \x07\xFF")}}};
    EXPECT_EQ(hostile.description(),
              "Error Domain=a\\x1b[2J\\nb Code=-4 \"(null)\" UserInfo={message=\\xc2\\x9b \\x07\\xff}");
    const Error nested{"D", 1, {{"a", Value(Value::Dictionary{{"b", Value("x\ny")}, {"c", Value(true)}})}}};
    EXPECT_EQ(nested.description(), "Error Domain=D Code=1 \"(null)\" UserInfo={a={b = \"x\\ny\"; c = 1}}");
}

TEST(ErrorTest, AServersWholeAnswerStaysShort) {
    Value deep("inside");
    Value::Array wide;
    for (int level = 0; level < 500; ++level)
        deep = Value(level % 2 == 0 ? Value(Value::Array{deep, Value("beside")})
                                    : Value(Value::Dictionary{{"key", deep}}));
    for (int item = 0; item < 50000; ++item)
        wide.emplace_back("item");
    const std::string long200KB(200000, 'x');
    const std::string accents = "\xC3\xA9";
    std::string longAccents;
    while (longAccents.size() < 200000)
        longAccents += accents;
    const Error errors[] = {{"D", 1, {{"a", deep}}},
                            {"D", 1, {{"a", Value(wide)}}},
                            {"D", 1, {{"a", Value(long200KB)}}},
                            {"D", 1, {{long200KB, Value(true)}}},
                            {long200KB, 1, {}},
                            Error::withDescription("D", 1, longAccents)};
    for (const Error& error : errors) {
        const std::string text = error.description();
        EXPECT_LE(text.size(), 4096U + std::string(foundation::ellipsis).size());
        EXPECT_NE(text.find(foundation::ellipsis), std::string::npos) << text;
        EXPECT_TRUE(foundation::isValidUtf8(text)) << text;
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
    EXPECT_LT(errors[0].description().size(), 1000U) << "nesting is cut, not only the text";
}

TEST(TextTest, InsertsArgumentsAsTheyAre) {
    EXPECT_EQ(foundation::format("%@ and %@%%@ %d", {"%@", "b", "x"}), "%@ and b%x %d");
    EXPECT_EQ(foundation::textOf(std::optional<std::string>()), "(null)");
}

// Deliberate in the program: "#", "[" and "]" are escaped as well, the other reserved characters are not.
TEST(PercentEscapeTest, EscapesWhatMayNotStandInAURL) {
    const char* const rows[][2] = {{"a b/c?d#e[f]%41", "a%20b/c?d%23e%5Bf%5D%2541"},
                                   {"it's~(x)!*;,:@$_-.&=+", "it's~(x)!*;,:@$_-.&=+"},
                                   {"\t\x7F", "%09%7F"},
                                   {"\"<>\\^{}`|", "%22%3C%3E%5C%5E%7B%7D%60%7C"}};
    for (const auto& [text, escaped] : rows) {
        EXPECT_EQ(foundation::addingPercentEscapes(text), escaped);
        EXPECT_EQ(foundation::removingPercentEscapes(escaped), text);
    }
    EXPECT_EQ(foundation::addingPercentEscapes("caf\xC3\xA9"), std::nullopt);
    EXPECT_EQ(foundation::removingPercentEscapes("%zz%4"), "%zz%4");
}

TEST(MessageTextTest, ControlCharactersNeverReachATerminal) {
    using foundation::printableText;
    EXPECT_EQ(printableText("a\n\tb \u00e9\u4e2d"), "a\n\tb \u00e9\u4e2d");
    for (int byte = 0; byte < 256; ++byte) {
        const std::string alone(1, static_cast<char>(byte));
        const bool harmless = byte == '\n' || byte == '\t' || (byte >= ' ' && byte < 0x7F);
        EXPECT_EQ(printableText(alone) == alone, harmless) << byte;
        EXPECT_EQ(printableText("\u4e2d" + alone).find(alone, 3) != std::string::npos, harmless) << byte;
    }
    for (int byte = 0x80; byte < 0xC0; ++byte) {
        const std::string character{'\xC2', static_cast<char>(byte)};
        EXPECT_EQ(printableText(character) == character, byte >= 0xA0) << "U+00" << std::hex << byte;
    }
}

TEST(MessageTextTest, PlainTerminalsGetTheNearestAscii) {
    EXPECT_EQ(foundation::asciiText("It\u2019s \u201Ea\u201C\u2026\u00A0\u4e2d\u00e9\n\xFF-"), "It's \"a\"... ??\n?-");
}
