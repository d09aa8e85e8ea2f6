#include "ui/TXLocalizedString.h"

#include "platform/Platform.h"

std::string TXLocalizedString(const std::string& key) {
    return platform::current().bundles->localizedString(key, "");
}
