#include "foundation/JSON.h"

#include <gtest/gtest.h>

#include <cmath>

// What reads as JSON, in which encodings, and what is refused; the writing of texts. The messages of errors are free.

using foundation::parseJSON;
using foundation::Value;
using namespace std::string_literals;

namespace {

template <class Content>
Value list(Content content) {
    return Value(Value::Array{Value(std::move(content))});
}

std::string nested(std::size_t levels, const std::string& inner) {
    return std::string(levels, '[') + inner + std::string(levels, ']');
}

} // namespace

TEST(JSONTest, ReadsDocuments) {
    const Value one(Value::Dictionary{{"a", Value(std::int64_t{1})}});
    const std::tuple<const char*, std::string, Value> rows[] = {
        {"trailing comma in an object", " \t\r\n{ \"a\" : 1 , } \n", one},
        {"trailing comma in an array", "[1,]", list(std::int64_t{1})},
        {"the last of two equal keys", "{\"a\":true,\"a\":1}", one},
        {"escapes", R"(["\"\\\/\b\f\n\r\t\u00e9\ud83d\ude00"])", list("\"\\/\b\f\n\r\t\xC3\xA9\xF0\x9F\x98\x80")},
        {"largest whole number", "[9223372036854775807]", list(std::int64_t{INT64_MAX})},
        {"beyond whole numbers", "[9223372036854775808]", list(9223372036854775808.0)},
        {"fraction and exponent", "[-0.5e+2]", list(-50.0)},
        {"beyond all numbers", "[1e999]", list(HUGE_VAL)},
        {"beyond all negative numbers", "[-1.5E999]", list(-HUGE_VAL)},
        {"closer to zero than any number", "[1e-999]", list(0.0)},
        {"the largest number", "[1.7976931348623157e308]", list(1.7976931348623157e308)},
        {"all digits of a number", "[0.1]", list(0.1)},
        {"UTF-8 with a mark", "\xEF\xBB\xBF{\"a\":1}", one},
        {"UTF-16LE", "{\0\"\0a\0\"\0:\0001\0}\0"s, one},
        {"UTF-16BE", "\0{\0\"\0a\0\"\0:\0001\0}"s, one},
        {"UTF-16 surrogate pair", "[\0\"\0\x3D\xD8\x00\xDE\"\0]\0"s, list("\xF0\x9F\x98\x80")},
        {"UTF-32LE", "[\0\0\0001\0\0\0]\0\0\0"s, list(std::int64_t{1})},
        {"UTF-32BE", "\0\0\0[\0\0\0001\0\0\0]"s, list(std::int64_t{1})},
    };
    for (const auto& [name, text, expected] : rows) {
        SCOPED_TRACE(name);
        const auto answer = parseJSON(text);
        ASSERT_TRUE(answer) << answer.error().description();
        EXPECT_EQ(*answer, expected) << answer->description();
    }
    EXPECT_TRUE(parseJSON(nested(512, "1"))) << "the deepest nesting";
}

TEST(JSONTest, RefusesEverythingElse) {
    std::string manyObjects;
    for (int i = 0; i < 100000; ++i)
        manyObjects += "{\"a\":";
    std::vector<std::string> rows{nested(513, ""), nested(100000, ""), manyObjects, "\xFF\xFE[\0]"s};
    for (const char* structure : {"", "200", "null", "{}x", "[1 2]", "[1,,]", "{'a':1}", "{a:1}", "{\"a\":}", "{}//"})
        rows.emplace_back(structure);
    for (const char* content : {"01", "1.", ".5", "+1", "NaN", "\"\n\"", "\"\\x41\"", "\"\\u12\"", "\"\\udc00\"",
                                "\"\\ud800\\u0041\"", "\"\xFF\"", "\"\xC0\xAF\"", "\"\\\"", "\"a"})
        rows.push_back("[" + std::string(content) + "]");
    for (const std::string& text : rows) {
        SCOPED_TRACE(text.substr(0, 20));
        const auto answer = parseJSON(text);
        ASSERT_FALSE(answer);
        EXPECT_EQ(answer.error().domain, "NSCocoaErrorDomain");
        EXPECT_EQ(answer.error().code, 3840);
    }
}

TEST(JSONTest, WritesTextsThatReadBackTheSame) {
    const auto written = [](const std::map<std::string, std::string>& texts) {
        return foundation::serializeJSON(texts).value();
    };
    const std::string odd = "\"\\/\b\f\n\r\t\x01\x1F\xC3\xA9\xF0\x9F\x98\x80 &=";
    EXPECT_EQ(parseJSON(written({{"k\"", odd}, {"b", ""}})).value(),
              Value(Value::Dictionary{{"k\"", Value(odd)}, {"b", Value("")}}));
    EXPECT_EQ(written({{"a", "x/y"}, {"b", "\x02"}}), R"({"a":"x\/y","b":"\u0002"})");
    EXPECT_EQ(written({}), "{}");
    EXPECT_FALSE(foundation::serializeJSON({{"a", "\xFF"}}));
}
