#include "base/utf8.h"

#include <cstddef>

namespace corvane {

namespace {

constexpr char32_t replacementScalar = 0xFFFD;
constexpr std::string_view replacement = "\xEF\xBF\xBD";

}  // namespace

DecodedScalar decodeUTF8(std::string_view bytes, size_t at) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = byte(at);
  if (lead < 0x80) return {lead, 1};
  size_t length = 0;
  char32_t value = 0;
  unsigned char low = 0x80, high = 0xBF;  // the allowed range of the second byte
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    value = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    value = lead & 0x0F;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    value = lead & 0x07;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return {replacementScalar, 1};
  }
  for (size_t i = 1; i < length; ++i) {
    if (at + i >= bytes.size()) return {replacementScalar, i};
    const unsigned char next = byte(at + i);
    const unsigned char min = i == 1 ? low : 0x80;
    const unsigned char max = i == 1 ? high : 0xBF;
    if (next < min || next > max) return {replacementScalar, i};
    value = (value << 6) | (next & 0x3F);
  }
  return {value, length};
}

std::string repairedUTF8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  size_t at = 0;
  while (at < bytes.size()) {
    const DecodedScalar scalar = decodeUTF8(bytes, at);
    // A well-formed U+FFFD in the input is copied like any other scalar.
    const bool wellFormed = scalar.value != replacementScalar || bytes.substr(at, scalar.length) == replacement;
    text.append(wellFormed ? bytes.substr(at, scalar.length) : replacement);
    at += scalar.length;
  }
  return text;
}

}  // namespace corvane
