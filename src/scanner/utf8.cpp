#include "scanner/utf8.h"

#include <cstdint>

namespace corvane {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// The length of the well-formed sequence a lead byte starts, and the allowed range of its second
// byte (the later ones are always 80..BF); 0 for a byte that can't start a sequence.
struct Lead {
  int length;
  uint8_t low;
  uint8_t high;
};

Lead leadOf(uint8_t byte) {
  if (byte <= 0x7F) return {1, 0, 0};
  if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, 0xBF};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {3, 0x80, 0xBF};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {4, 0x80, 0xBF};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

}  // namespace

std::string decodeUTF8Lossy(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  size_t i = 0;
  while (i < bytes.size()) {
    const Lead lead = leadOf(static_cast<uint8_t>(bytes[i]));
    if (lead.length == 1) {
      text.push_back(bytes[i++]);
      continue;
    }
    if (lead.length == 0) {
      text.append(replacement);
      ++i;
      continue;
    }
    size_t end = i + 1;
    for (int k = 1; k < lead.length && end < bytes.size(); ++k, ++end) {
      const auto byte = static_cast<uint8_t>(bytes[end]);
      const uint8_t low = k == 1 ? lead.low : 0x80;
      const uint8_t high = k == 1 ? lead.high : 0xBF;
      if (byte < low || byte > high) break;
    }
    if (end - i == static_cast<size_t>(lead.length)) {
      text.append(bytes.substr(i, end - i));
    } else {
      text.append(replacement);
    }
    i = end;
  }
  return text;
}

}  // namespace corvane
