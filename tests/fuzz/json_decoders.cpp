// The JSON that corvane decodes: snapshots and items of the fixtures, undo records and Docker's lines.
// Any text decodes or fails as a value; what decodes prints JSON that reads back to the same JSON.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "activity/undo.h"
#include "detect/item.h"
#include "support/item_decoding.h"
#include "scanner/containers.h"
#include "snapshot/proc.h"

namespace {

template <typename Decode>
void roundTrip(const nlohmann::json& json, Decode decode) {
  const auto value = decode(json);
  if (!value) return;
  // Items print their dates in whole seconds, so a decoded value may lose a fraction once; what is
  // printed must then read back to itself.
  const auto printed = corvane::toJSON(*value.value);
  const auto back = decode(printed);
  if (!back || corvane::toJSON(*back.value) != printed) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto json = nlohmann::json::parse(bytes, nullptr, false);
  if (!json.is_discarded()) {
    roundTrip(json, corvane::decodeSnapshot);
    roundTrip(json, corvane::decodeProc);
    roundTrip(json, corvane::decodeItem);
    roundTrip(json, corvane::decodeContainer);
    roundTrip(json, corvane::decodeStop);
    roundTrip(json, corvane::decodeUndo);
  }
  // Docker's two outputs: the input up to its first NUL is the ps output, the rest the stats output.
  const size_t split = std::min(bytes.find('\0'), bytes.size());
  corvane::parseJSONLines(bytes);
  corvane::containersFromDockerOutput(bytes.substr(0, split), bytes.substr(std::min(split + 1, bytes.size())));
  return 0;
}
