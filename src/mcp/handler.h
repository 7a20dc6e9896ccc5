#pragma once
// One line of JSON-RPC in, at most one line out.
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "mcp/tools.h"

namespace corvane::MCP {

// Runs a parsed tool call; the server binds it to its scanner and caller.
using Runner = std::function<Reply(const Call&)>;

// The reply to one input line, or nothing (notifications, replies that can't be written).
std::optional<std::string> handle(std::string_view line, const std::string& version, const Runner& run);

// An error envelope; `id` null when the request had none.
nlohmann::json error(int code, const std::string& message, const nlohmann::json& id,
                     const nlohmann::json& data = nullptr);

}  // namespace corvane::MCP
