#pragma once
// Text made of lines: the kernel's files, the tools' output, the activity log.
#include <string_view>
#include <vector>

namespace corvane {

// The lines of `text` without their line feeds, empty ones included. A final line feed ends the last line
// rather than starting an empty one, so "" and "\n" hold no line and one empty line.
std::vector<std::string_view> splitLines(std::string_view text);

}  // namespace corvane
