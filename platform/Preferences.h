#pragma once

#include "foundation/Value.h"

#include <optional>
#include <string>

namespace platform {

// A person's settings, kept per domain (a reverse-domain application identifier). Main thread.
class Preferences {
public:
    virtual ~Preferences() = default;

    // The stored value, as it stands on disk at this moment. Nothing when there is none or the file cannot be read.
    virtual std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) = 0;

    // Changes the value, or removes it when absent; written out by synchronize.
    virtual void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                          const std::string& domain) = 0;

    // Writes pending changes; other programs' changes to other keys survive. False when that was not possible.
    virtual bool synchronize(const std::string& domain) = 0;
};

} // namespace platform
