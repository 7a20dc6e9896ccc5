#pragma once
// The rows the user pinned in the desktop app. Pins are by row key; the stored values are the app's.
#include <map>
#include <string>

#include "detect/item.h"

namespace corvane::platform {
class DefaultsStore;
}

namespace corvane {

using Pins = std::map<std::string, std::string>;

// The "pins" dictionary of the desktop app's suite, read fresh. Empty when the suite can't be read,
// the key is missing, the value is not a dictionary, or any pin's value is not a string.
Pins readPins();
// The same, from the given suite.
Pins readPins(const platform::DefaultsStore& store);

bool isPinned(const Pins& pins, const Item& item);

}  // namespace corvane
