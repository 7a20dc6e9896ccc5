#pragma once
// The few questions the anonymizer asks about the characters of a name. Names are UTF-8 bytes; every
// byte of a non-ASCII character counts as a letter, so a name in any script is treated as a word (and
// hashed) rather than as punctuation or numbers (and kept).
#include <string_view>

namespace corvane {

bool isLetter(char c);  // ASCII letter, or any byte of a non-ASCII character
bool containsLetter(std::string_view text);
bool containsDigit(std::string_view text);  // ASCII digits
bool isLettersOnly(std::string_view text);  // true for ""
// The number of characters (Unicode code points) of UTF-8 text; a stray continuation byte counts as none.
size_t characterCount(std::string_view text);
// 8-4-4-4-12 hexadecimal digits of either case with hyphens: 36 characters exactly.
bool isUUID(std::string_view text);

}  // namespace corvane
