#include "anonymize/characters.h"

#include <algorithm>

#include "snapshot/unicode.h"

namespace corvane {

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

}  // namespace corvane
