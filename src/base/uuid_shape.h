#pragma once
// Text shaped like a UUID: 8-4-4-4-12 hexadecimal digits with hyphens, 36 characters exactly.
#include <string_view>

namespace corvane {

enum class HexLetters { eitherCase, upperCase };

bool isUUIDShape(std::string_view text, HexLetters letters = HexLetters::eitherCase);

}  // namespace corvane
