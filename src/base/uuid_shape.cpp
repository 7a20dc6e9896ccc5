#include "base/uuid_shape.h"

namespace corvane {

namespace {

bool isHexDigit(char c, HexLetters letters) {
  if (c >= '0' && c <= '9') return true;
  if (c >= 'A' && c <= 'F') return true;
  return letters == HexLetters::eitherCase && c >= 'a' && c <= 'f';
}

}  // namespace

bool isUUIDShape(std::string_view text, HexLetters letters) {
  if (text.size() != 36) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool hyphenPlace = i == 8 || i == 13 || i == 18 || i == 23;
    if (hyphenPlace ? text[i] != '-' : !isHexDigit(text[i], letters)) return false;
  }
  return true;
}

}  // namespace corvane
