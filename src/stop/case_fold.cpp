#include "stop/case_fold.h"

#include <cstdint>

namespace corvane {

namespace {

// Decodes one code point at `pos` and advances past it; a byte that doesn't start a valid sequence
// comes back as itself with the high bit marked, so that it only equals the same byte.
char32_t next(std::string_view text, size_t& pos) {
  const auto lead = static_cast<uint8_t>(text[pos]);
  size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
  if (length == 0 || pos + length > text.size()) {
    ++pos;
    return 0x80000000u | lead;
  }
  char32_t cp = length == 1 ? lead : lead & (0x7F >> length);
  for (size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<uint8_t>(text[pos + i]);
    if ((byte & 0xC0) != 0x80) {
      ++pos;
      return 0x80000000u | lead;
    }
    cp = (cp << 6) | (byte & 0x3F);
  }
  pos += length;
  return cp;
}

char32_t fold(char32_t c) {
  if (c >= 'A' && c <= 'Z') return c + 0x20;
  if (c < 0xC0) return c;
  if (c <= 0xDE) return c == 0xD7 ? c : c + 0x20;  // Latin-1, except the multiplication sign
  if (c == 0x178) return 0xFF;                      // Ÿ
  if (c == 0x130) return 'i';                       // İ
  if ((c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177))
    return c | 1;                                   // pairs with the capital at the even code point
  if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return (c & 1) ? c + 1 : c;
  if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return c + 0x20;  // Greek capitals
  if (c == 0x3C2) return 0x3C3;                                 // final sigma
  if (c >= 0x410 && c <= 0x42F) return c + 0x20;                // Cyrillic А..Я
  if (c >= 0x400 && c <= 0x40F) return c + 0x50;                // Ѐ..Џ
  return c;
}

}  // namespace

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  size_t i = 0;
  size_t j = 0;
  while (i < a.size() && j < b.size()) {
    const char32_t x = next(a, i);
    const char32_t y = next(b, j);
    if (x != y && fold(x) != fold(y)) return false;
  }
  return i == a.size() && j == b.size();
}

}  // namespace corvane
