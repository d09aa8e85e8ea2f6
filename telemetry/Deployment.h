#pragma once

#include <optional>
#include <string>

// What a distribution of the installer fixes in its bundle's information dictionary. Read afresh on every call; absent
// keys give an empty text, except where absence means something. Any thread.
namespace Deployment {

// A text of the main bundle's information dictionary; a value of another kind counts as absent.
std::optional<std::string> informationText(const std::string& key);

// Hosts may carry a port.
std::string binariesHost();
std::string installerLogHost();
std::string supportHost();
std::string storeHost();
std::string storeIdentifier();
std::string productBundleIdentifier();

// The preference domain of the product's agent; without one nothing is read or stored.
std::optional<std::string> agentPreferencesDomain();

// Where the product is installed.
std::string applicationPath();

} // namespace Deployment
