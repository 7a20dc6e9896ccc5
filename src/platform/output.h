#pragma once
// The only writers to the standard streams: each call is one write of the whole text. Only the commands
// and the MCP server call them.
#include <optional>
#include <string>
#include <string_view>

namespace corvane::platform {

// False when the text could not all be written (a full disk, a reader that has gone).
bool writeOut(std::string_view text);
bool writeErr(std::string_view text);

// Why a write to standard output failed, as the system words it ("No space left on device"); absent
// while every write has succeeded.
std::optional<std::string> outputFailure();

// A reader that goes away makes the next write fail with EPIPE instead of ending the program, so that
// the program can finish what it was doing and say so. Children start with the default again.
void ignoreBrokenPipes();

}  // namespace corvane::platform
