#pragma once

#include <string>

// The text for the key in the person's language; the key itself where the table lacks it. The one door through which
// every text that a person sees is looked up. Main thread.
std::string TXLocalizedString(const std::string& key);
