#pragma once
// What the program asks of Unicode about the text it shows and compares: normal forms, case, and
// what a character is. Text that isn't UTF-8 is read through repairedUTF8's rules.
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// Canonically composed (NFC): "e" + U+0301 and U+00E9 give the same bytes, so byte order of the
// result is the order of the Unicode scalars of the normalized text.
std::string composedText(std::string_view text);

// Canonically decomposed and fully case folded: the form in which two texts are equal when they
// differ only in case ("STRASSE", "straße") or in how their accents are spelt.
std::string foldedText(std::string_view text);

// Each scalar lower-cased on its own (no locale): "KEY" with a Kelvin sign for the K gives "key".
std::string lowercasedText(std::string_view text);

// The characters of the text as a reader sees them (extended grapheme clusters): "e" + U+0301 is
// one character, so is a flag of two regional indicators.
std::vector<std::string_view> characters(std::string_view text);

// Properties of a character, decided by its first scalar.
bool isLetter(std::string_view character);        // a letter of any script
bool isDecimalDigit(std::string_view character);  // 0-9 and the digits of other scripts
bool isWhiteSpace(std::string_view character);    // every Unicode white space, line breaks included

}  // namespace corvane
