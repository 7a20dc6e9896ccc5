#pragma once
// The only writers to the standard streams: each call is one write of the whole text.
#include <string_view>

namespace corvane {

void writeOut(std::string_view text);
void writeErr(std::string_view text);

}  // namespace corvane
