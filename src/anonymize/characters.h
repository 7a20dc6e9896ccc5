#pragma once
// The few questions the anonymizer asks about the characters of a name. A character is what a reader
// sees as one (a letter with its accents is one); letters and digits are those of every script, so a
// name in any script is a word (and hashed), while dashes, symbols and emoji are not letters (and a
// name made only of them is kept).
#include <string_view>

namespace corvane {

bool containsLetter(std::string_view text);
bool containsDigit(std::string_view text);
bool isLettersOnly(std::string_view text);  // true for ""
size_t characterCount(std::string_view text);

}  // namespace corvane
