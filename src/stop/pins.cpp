#include "stop/pins.h"

#include "platform/defaults.h"

namespace corvane {

Pins readPins() { return readPins(platform::DefaultsStore::appSuite()); }

// The app stores every pin with a string value; a value of another type means the dictionary is not
// one the app wrote, so none of it is trusted.
Pins readPins(const platform::DefaultsStore& store) {
  const auto stored = store.readDictionary("pins");
  if (!stored) return {};
  Pins pins;
  for (const auto& [key, value] : *stored) {
    const std::string* text = std::get_if<std::string>(&value);
    if (!text) return {};
    pins.emplace(key, *text);
  }
  return pins;
}

bool isPinned(const Pins& pins, const Item& item) { return pins.contains(item.key); }

}  // namespace corvane
