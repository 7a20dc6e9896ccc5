#pragma once
#include <string_view>

namespace corvane {

// The sixteen lines of the usage text, without a line feed after the last.
extern const std::string_view usageText;
// The free command's message for a gigabytes value it can't take, line feed included.
extern const std::string_view gigabytesMessage;

}  // namespace corvane
