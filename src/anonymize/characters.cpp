#include "anonymize/characters.h"

#include <algorithm>

namespace corvane {
namespace {

bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

}  // namespace

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

bool containsLetter(std::string_view text) { return std::any_of(text.begin(), text.end(), isLetter); }

bool containsDigit(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isLettersOnly(std::string_view text) { return std::all_of(text.begin(), text.end(), isLetter); }

size_t characterCount(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !isContinuationByte(c); }));
}

bool isUUID(std::string_view text) {
  if (text.size() != 36) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool hyphenPlace = i == 8 || i == 13 || i == 18 || i == 23;
    if (hyphenPlace ? text[i] != '-' : !isHexDigit(text[i])) return false;
  }
  return true;
}

}  // namespace corvane
