#include "foundation/StringsTable.h"

#include <gtest/gtest.h>

// The syntax of tables as translators write them, and that a broken one gives nothing at all.

using foundation::parseStringsTable;
using namespace std::string_literals;

namespace {

using Table = std::map<std::string, std::string>;

std::string wide(const std::string& ascii, bool bigEndian) {
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii)
        bytes += bigEndian ? "\0"s + c : c + "\0"s;
    return bytes;
}

} // namespace

TEST(StringsTableTest, ReadsTables) {
    const std::tuple<const char*, std::string, Table> rows[] = {
        {"two entries", "\"A\" = \"x y\";\n\"B\"=\"\";", {{"A", "x y"}, {"B", ""}}},
        {"comments", "/* a = \"b\"; */ // c\n\"A\" /**/ = // \"\n \"x\" /* ; */ ;//", {{"A", "x"}}},
        {"comment marks inside a text", "\"A\" = \"http://h/*\";", {{"A", "http://h/*"}}},
        {"bare words", "A_1 = b.c-d;", {{"A_1", "b.c-d"}}},
        {"key alone", "\"A\";", {{"A", "A"}}},
        {"single quotes", "'A' = 'say \"x\"';", {{"A", "say \"x\""}}},
        {"braces around all", "{ \"A\" = \"x\"; }", {{"A", "x"}}},
        {"escapes", R"("A" = "\"\\\n\t\U00e9\Ud83d\Ude00 \101\q";)", {{"A", "\"\\\n\t\xC3\xA9\xF0\x9F\x98\x80 Aq"}}},
        {"line break inside a text", "\"A\" = \"x\ny\";", {{"A", "x\ny"}}},
        {"UTF-8", "\"A\" = \"\xE7\xBB\xA7\";", {{"A", "\xE7\xBB\xA7"}}},
        {"UTF-8 with a mark", "\xEF\xBB\xBF\"A\" = \"x\";", {{"A", "x"}}},
        {"UTF-16LE", wide("\"A\" = \"x\";\n", false), {{"A", "x"}}},
        {"UTF-16BE", wide("\"A\" = \"x\";\n", true), {{"A", "x"}}},
        {"comments alone", "/* nothing yet */", {}},
    };
    for (const auto& [name, text, expected] : rows)
        EXPECT_EQ(parseStringsTable(text), expected) << name;
}

TEST(StringsTableTest, OneFaultGivesNoTable) {
    std::vector<std::string> rows{wide("\"A\" = \"x\";", false) + "\n", "\"A\" = \"\xFF\";"};
    for (const char* text :
         {R"("A" = "x" "B" = "y";)", R"("A" = "x")", R"("A" = ;)", R"(= "x";)", R"("A" = "x;)", R"("A" = "x\)",
          R"("A" = "x"y";)", R"({ "A" = "x";)", R"("A" = "x"; })", R"("A" = "\Ud83d";)", R"("A" = "\Ud83d\U0041";)"})
        rows.emplace_back(text);
    for (const std::string& text : rows) {
        EXPECT_EQ(parseStringsTable(text), std::nullopt) << text;
        EXPECT_EQ(parseStringsTable("\"Z\" = \"good\";\n" + text), std::nullopt) << text;
    }
    EXPECT_EQ(parseStringsTable(""), std::nullopt);
}
