#pragma once

#include "foundation/Value.h"

#include <optional>
#include <string>

namespace platform {

// A person's settings, kept per domain (a reverse-domain application identifier). Main thread.
class Preferences {
public:
    virtual ~Preferences() = default;

    // The value, as this program has changed it or else as it was stored when the domain was first asked for or last
    // synchronized. A flag or number may come back as the text of it. Nothing when there is none.
    virtual std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) = 0;

    // Changes the value, or removes it when absent; seen at once here, and by other programs after synchronize.
    virtual void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                          const std::string& domain) = 0;

    // Stores the changes before it returns; what else stands in the domain survives. What could not be stored is tried
    // again by the next call.
    virtual void synchronize(const std::string& domain) = 0;
};

} // namespace platform
