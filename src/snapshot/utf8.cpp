#include "snapshot/utf8.h"

#include <cstddef>

namespace corvane {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// Length of the well-formed sequence that starts at `at`, or 0 with `consumed` set to the length
// of the maximal prefix of one that has to be replaced as a whole.
size_t sequenceLength(std::string_view bytes, size_t at, size_t& consumed) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = byte(at);
  consumed = 1;
  if (lead < 0x80) return 1;
  size_t length = 0;
  unsigned char low = 0x80, high = 0xBF;  // the allowed range of the second byte
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  for (size_t i = 1; i < length; ++i) {
    if (at + i >= bytes.size()) return 0;
    const unsigned char next = byte(at + i);
    const unsigned char min = i == 1 ? low : 0x80;
    const unsigned char max = i == 1 ? high : 0xBF;
    if (next < min || next > max) return 0;
    consumed = i + 1;
  }
  return length;
}

}  // namespace

std::string repairedUTF8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  size_t at = 0;
  while (at < bytes.size()) {
    size_t consumed = 0;
    const size_t length = sequenceLength(bytes, at, consumed);
    if (length > 0) {
      text.append(bytes.substr(at, length));
      at += length;
      continue;
    }
    text.append(replacement);
    at += consumed;
  }
  return text;
}

}  // namespace corvane
