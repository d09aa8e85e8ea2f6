#pragma once

#include "foundation/Value.h"

#include <optional>
#include <string>

// The person's preferences in the product agent's domain, and facts about this computer. Main thread.
class TXInstallerTools {
public:
    TXInstallerTools() = delete;

    // The stored value of any kind, or nothing.
    static std::optional<foundation::Value> objectForUserDefaultsKey(const std::string& key);

    // Stores the value, or removes it when absent, and writes it out before returning. A failed write is not reported.
    static void setObject(const std::optional<foundation::Value>& value, const std::string& forUserDefaultsKey);

    // A stored value of any kind read as a flag; absent is false.
    static bool boolForUserDefaultsKey(const std::string& key);
    static void setBool(bool flag, const std::string& forUserDefaultsKey);

    // Whether events are printed on the console.
    static bool showLogs();

    // The anonymous identifier of this account: made and stored at the first call ever, the same from then on. Absent
    // where none is stored and none can be made.
    static std::optional<std::string> installerId();

    // The system's version in the form that the services know, such as "OS_X_10_9_5".
    static std::string systemVersionString();

    // Whether the edition from the store is present, judged by its sandbox container; a product without an identifier
    // has none.
    static bool isInstalledMASTolvixAgent();
};
