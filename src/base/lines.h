#pragma once
// Text made of lines: the kernel's files, the tools' output, the activity log.
#include <span>
#include <string_view>
#include <vector>

namespace corvane {

// The lines of `text` without their line feeds, empty ones included. A final line feed ends the last line
// rather than starting an empty one, so "" and "\n" hold no line and one empty line.
std::vector<std::string_view> splitLines(std::string_view text);

// Fills `fields` with the runs of `text` between the characters of `blanks`, from the first, until it is
// full; returns how many it filled.
size_t splitFields(std::string_view text, std::string_view blanks, std::span<std::string_view> fields);

}  // namespace corvane
