#pragma once
// JSON text as the platform's encoder writes it by default: sorted keys, "/" written as "\/", UTF-8. The
// command line prints it pretty; the activity log and the agents' listing get it compact.
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace corvane {

// The MCP server writes "/" as it is; everything else escapes it.
enum class Slashes { escaped, plain };

// Compact; absent when the value holds text that isn't UTF-8.
std::optional<std::string> encodeCompactJSON(const nlohmann::json& value, Slashes slashes = Slashes::escaped);

// The command line's JSON: pretty printed; empty text when encoding fails.
std::string encodeJSON(const nlohmann::json& value);

}  // namespace corvane
