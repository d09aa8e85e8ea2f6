#pragma once

#include "foundation/Value.h"

#include <optional>
#include <string>

namespace platform {

// A person's settings, kept per domain (a reverse-domain application identifier). Main thread.
class Preferences {
public:
    virtual ~Preferences() = default;

    // The stored value, as it stands on disk at this moment or will once this program's changes are written. Nothing
    // when there is none or the file cannot be read.
    virtual std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) = 0;

    // Changes the value, or removes it when absent; written out by synchronize.
    virtual void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                          const std::string& domain) = 0;

    // Lets the changes be written, without waiting for the disk; other programs' changes to other keys survive. What
    // could not be written is tried again by the next call.
    virtual void synchronize(const std::string& domain) = 0;
};

} // namespace platform
