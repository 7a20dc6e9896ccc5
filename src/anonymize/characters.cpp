#include "anonymize/characters.h"

#include <algorithm>

#include "snapshot/unicode.h"

namespace corvane {
namespace {

bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace

bool containsLetter(std::string_view text) {
  const auto all = characters(text);
  return std::any_of(all.begin(), all.end(), [](std::string_view c) { return isLetter(c); });
}

bool containsDigit(std::string_view text) {
  const auto all = characters(text);
  return std::any_of(all.begin(), all.end(), [](std::string_view c) { return isDecimalDigit(c); });
}

bool isLettersOnly(std::string_view text) {
  const auto all = characters(text);
  return std::all_of(all.begin(), all.end(), [](std::string_view c) { return isLetter(c); });
}

size_t characterCount(std::string_view text) { return characters(text).size(); }

bool isUUID(std::string_view text) {
  if (text.size() != 36) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool hyphenPlace = i == 8 || i == 13 || i == 18 || i == 23;
    if (hyphenPlace ? text[i] != '-' : !isHexDigit(text[i])) return false;
  }
  return true;
}

}  // namespace corvane
