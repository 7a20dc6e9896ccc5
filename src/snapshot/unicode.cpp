#include "snapshot/unicode.h"

#include <cstdlib>

#include <utf8proc.h>

#include "base/utf8.h"

namespace corvane {

namespace {

std::string mapped(std::string_view text, utf8proc_option_t options) {
  // utf8proc refuses ill-formed input as a whole; the repaired text is what records hold anyway.
  const std::string valid = repairedUTF8(text);
  utf8proc_uint8_t* result = nullptr;
  const utf8proc_ssize_t length =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(valid.data()), static_cast<utf8proc_ssize_t>(valid.size()),
                   &result, options);
  if (length < 0) return valid;  // out of memory: the text as it is is the best answer left
  std::string out(reinterpret_cast<const char*>(result), static_cast<size_t>(length));
  std::free(result);
  return out;
}

char32_t firstScalar(std::string_view character) {
  return character.empty() ? 0 : decodeUTF8(character, 0).value;
}

utf8proc_category_t category(std::string_view character) {
  return utf8proc_category(static_cast<utf8proc_int32_t>(firstScalar(character)));
}

}  // namespace

std::string composedText(std::string_view text) {
  return mapped(text, static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
}

std::string foldedText(std::string_view text) {
  return mapped(text, static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_CASEFOLD));
}

std::string lowercasedText(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    const DecodedScalar scalar = decodeUTF8(text, at);
    utf8proc_uint8_t bytes[4];
    const auto lower = utf8proc_tolower(static_cast<utf8proc_int32_t>(scalar.value));
    result.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(utf8proc_encode_char(lower, bytes)));
    at += scalar.length;
  }
  return result;
}

std::vector<std::string_view> characters(std::string_view text) {
  std::vector<std::string_view> result;
  utf8proc_int32_t state = 0;
  utf8proc_int32_t previous = -1;
  size_t start = 0;
  for (size_t at = 0; at < text.size();) {
    const DecodedScalar scalar = decodeUTF8(text, at);
    const auto current = static_cast<utf8proc_int32_t>(scalar.value);
    if (previous >= 0 && utf8proc_grapheme_break_stateful(previous, current, &state)) {
      result.push_back(text.substr(start, at - start));
      start = at;
    }
    previous = current;
    at += scalar.length;
  }
  if (start < text.size()) result.push_back(text.substr(start));
  return result;
}

bool isLetter(std::string_view character) {
  switch (category(character)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO: return true;
    default: return false;
  }
}

bool isDecimalDigit(std::string_view character) { return category(character) == UTF8PROC_CATEGORY_ND; }

bool isWhiteSpace(std::string_view character) {
  switch (category(character)) {
    case UTF8PROC_CATEGORY_ZS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP: return true;
    default: break;
  }
  // The White_Space property adds these controls to the separators: tab, line feed, line tabulation,
  // form feed, carriage return and next line. utf8proc has no lookup of the property itself.
  const char32_t scalar = firstScalar(character);
  return (scalar >= 0x09 && scalar <= 0x0D) || scalar == 0x85;
}

}  // namespace corvane
