#include "platform/cocoa/CocoaText.h"
#include "platform/cocoa/CocoaValue.h"

#include <gtest/gtest.h>

using foundation::Value;
using namespace platform;

TEST(CocoaTextTest, CarriesEveryText) {
    for (const std::string& text : {std::string(), std::string("plain"),
                                    std::string("Gr\xC3\xBC\xC3\x9F \xF0\x9F\x93\xA6"), std::string("with\0zero", 9)})
        EXPECT_EQ(fromNSString(toNSString(text)), text);
    EXPECT_EQ(fromNSString(nil), "");
}

TEST(CocoaTextTest, MarksBytesThatAreNoText) {
    EXPECT_EQ(fromNSString(toNSString("a\xFF\xC3")), "a\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CocoaValueTest, CarriesEveryKindOfValue) {
    const Value value(Value::Dictionary{{"flag", Value(true)},
                                        {"no", Value(false)},
                                        {"one", Value(std::int64_t{1})},
                                        {"large", Value(std::int64_t{-9'000'000'000'000'000'000})},
                                        {"real", Value(2.5)},
                                        {"whole", Value(3.0)},
                                        {"text", Value("Gr\xC3\xBC\xC3\x9F")},
                                        {"list", Value(Value::Array{Value("a"), Value(Value::Array())})}});
    EXPECT_EQ(fromPropertyList(toPropertyList(value)), value);
}

TEST(CocoaValueTest, LeavesNullsOut) {
    EXPECT_TRUE(toPropertyList(Value()) == nil);
    EXPECT_EQ(fromPropertyList(toPropertyList(Value(Value::Array{Value(), Value("b")}))),
              Value(Value::Array{Value("b")}));
    EXPECT_EQ(fromPropertyList(nil), std::nullopt);
    EXPECT_EQ(fromPropertyList([NSNull null]), std::nullopt);
}

TEST(CocoaValueTest, ReadsDatesAndDataAsTheirTexts) {
    EXPECT_EQ(fromPropertyList([NSDate dateWithTimeIntervalSince1970:978307200.5]), Value("2001-01-01T00:00:00Z"));
    EXPECT_EQ(fromPropertyList([NSData dataWithBytes:"abc" length:3]), Value("YWJj"));
}

TEST(CocoaValueTest, ReadsAPropertyList) {
    NSString* text = @"<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict><key>flag</key><true/>"
                      "<key>number</key><integer>7</integer><key>real</key><real>0.5</real></dict></plist>";
    id list = [NSPropertyListSerialization propertyListWithData:[text dataUsingEncoding:NSUTF8StringEncoding]
                                                        options:NSPropertyListImmutable
                                                         format:NULL
                                                          error:NULL];
    EXPECT_EQ(
        fromPropertyList(list),
        Value(Value::Dictionary{{"flag", Value(true)}, {"number", Value(std::int64_t{7})}, {"real", Value(0.5)}}));
}
