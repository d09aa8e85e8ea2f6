#pragma once

#include "foundation/Value.h"

#import <Foundation/Foundation.h>

#include <optional>

namespace platform {

// The value as an autoreleased property list; nil for null. Nulls inside containers are left out, because a property
// list has none.
id toPropertyList(const foundation::Value& value);

// Dates and data become texts as they stand in an XML property list. Nothing for nil and for any other object.
std::optional<foundation::Value> fromPropertyList(id object);

// The dictionary; keys that are no texts are left out.
foundation::Value::Dictionary fromDictionary(NSDictionary* dictionary);

} // namespace platform
