#include "platform/cocoa/CocoaValue.h"

#include "platform/cocoa/CocoaText.h"

#include <array>
#include <cmath>
#include <cstring>
#include <ctime>
#include <utility>

namespace platform {
namespace {

using foundation::Value;

id arrayOf(const Value::Array& values) {
    NSMutableArray* array = [NSMutableArray array];
    for (const Value& value : values) {
        if (id object = toPropertyList(value))
            [array addObject:object];
    }
    return array;
}

id dictionaryOf(const Value::Dictionary& values) {
    NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
    for (const auto& [key, value] : values) {
        if (id object = toPropertyList(value))
            [dictionary setObject:object forKey:toNSString(key)];
    }
    return dictionary;
}

// Every flag is one of two shared objects; the type that a number says it holds does not tell flags from small numbers.
Value valueOfNumber(NSNumber* number) {
    for (const bool flag : {false, true}) {
        if (number == [NSNumber numberWithBool:flag])
            return Value(flag);
    }
    const bool isFloating = std::strchr("fd", *[number objCType]) != nullptr;
    return isFloating ? Value(static_cast<double>([number doubleValue]))
                      : Value(static_cast<std::int64_t>([number longLongValue]));
}

Value valueOfDate(NSDate* date) {
    const auto seconds = static_cast<std::time_t>(std::floor([date timeIntervalSince1970]));
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return Value(text.data());
}

Value valueOfArray(NSArray* array) {
    Value::Array values;
    for (id object in array) {
        if (auto value = fromPropertyList(object))
            values.push_back(std::move(*value));
    }
    return Value(std::move(values));
}

} // namespace

id toPropertyList(const Value& value) {
    if (const std::string* text = value.string())
        return toNSString(*text);
    if (const Value::Array* array = value.array())
        return arrayOf(*array);
    if (const Value::Dictionary* dictionary = value.dictionary())
        return dictionaryOf(*dictionary);
    if (const bool* flag = value.flag())
        return [NSNumber numberWithBool:*flag];
    if (const std::int64_t* integer = value.integer())
        return [NSNumber numberWithLongLong:*integer];
    if (const double* real = value.real())
        return [NSNumber numberWithDouble:*real];
    return nil;
}

std::optional<Value> fromPropertyList(id object) {
    if ([object isKindOfClass:[NSString class]])
        return Value(fromNSString(object));
    if ([object isKindOfClass:[NSNumber class]])
        return valueOfNumber(object);
    if ([object isKindOfClass:[NSArray class]])
        return valueOfArray(object);
    if ([object isKindOfClass:[NSDictionary class]])
        return Value(fromDictionary(object));
    if ([object isKindOfClass:[NSDate class]])
        return valueOfDate(object);
    if ([object isKindOfClass:[NSData class]])
        return Value(fromNSString([object base64EncodedStringWithOptions:0]));
    return std::nullopt;
}

Value::Dictionary fromDictionary(NSDictionary* dictionary) {
    Value::Dictionary values;
    for (id key in dictionary) {
        auto value = fromPropertyList([dictionary objectForKey:key]);
        if (value && [key isKindOfClass:[NSString class]])
            values.emplace(fromNSString(key), std::move(*value));
    }
    return values;
}

} // namespace platform
