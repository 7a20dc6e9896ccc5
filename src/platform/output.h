#pragma once
// The only writers to the standard streams: each call is one write of the whole text. Only the commands
// and the MCP server call them.
#include <string_view>

namespace corvane::platform {

void writeOut(std::string_view text);
void writeErr(std::string_view text);

}  // namespace corvane::platform
