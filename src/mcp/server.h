#pragma once
// `corvane mcp`: JSON-RPC over standard input and output, one message per line, one at a time.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "mcp/tools.h"

namespace corvane {
class Scanner;
}

namespace corvane::MCP {

// Runs until standard input ends; returns the exit code 0.
int32_t serve();

// The server's scanner, once tool discovery has finished: only the tools that read the dev stack
// wait for it.
using ScannerWhenReady = std::function<Scanner&()>;

// What one tool call does, with the server's scanner and the calling agent.
Reply callTool(const Call& call, const ScannerWhenReady& scanner, std::optional<int32_t> agentPID,
               const std::string& label);

}  // namespace corvane::MCP
