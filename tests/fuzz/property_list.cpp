// The property lists corvane reads from other programs (the desktop app's suite, a simulator's
// device.plist): any bytes give values or nothing, never a stop inside libplist.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

#include "platform/defaults.h"
#include "platform/property_list.h"

namespace {

// Every key and string of the tree, read the way corvane reads them.
void readAll(plist_t node) {
  if (plist_get_node_type(node) == PLIST_DICT) {
    plist_dict_iter iter = nullptr;
    plist_dict_new_iter(node, &iter);
    for (;;) {
      char* key = nullptr;
      plist_t value = nullptr;
      plist_dict_next_item(node, iter, &key, &value);
      std::free(key);
      if (!value) break;
      readAll(value);
    }
    std::free(iter);
  } else if (plist_get_node_type(node) == PLIST_ARRAY) {
    for (uint32_t i = 0; i < plist_array_get_size(node); ++i) readAll(plist_array_get_item(node, i));
  } else {
    corvane::platform::plistString(node);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (const auto root = corvane::platform::parsePlistDictionary(bytes)) {
    readAll(root.get());
    corvane::platform::plistSurvivesXML(root.get());
  }
  static const std::string file = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                                  "/corvane-fuzz-" + std::to_string(getpid()) + ".plist";
  std::ofstream(file, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(size));
  const corvane::platform::DefaultsStore store(file);
  store.readDictionary("pins");
  store.readDictionary("toolMisses");
  corvane::platform::plistStringValue(file, "name");
  return 0;
}
