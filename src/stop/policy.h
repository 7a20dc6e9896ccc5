#pragma once
// Whether a row may be stopped, and the short reason when it may not. Three rules, by how the row was
// picked: by id or port (the user can insist with "--yes"), by project or by `free` (never forced), and
// by a coding agent (also kept off rows that another agent started).
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "detect/item.h"

namespace corvane {

// Why a rule refuses a row, absent when it may be stopped: one of the rules below bound to its caller's
// pins, "--yes" or agent.
using Refusal = std::function<std::optional<std::string>(const Item&)>;

// A row picked by its id or one of its ports. "--yes" overrides pins and guards, never a missing stop method,
// and a build picked this way is stopped.
std::optional<std::string> refusalByIdOrPort(const Item& item, bool pinned, bool yes);

// Rows picked by project name, and the filter of `free`: builds are left alone too.
std::optional<std::string> refusalByProject(const Item& item, bool pinned);

namespace MCP {

// The rule for coding agents: the project rule, and a row that another agent started is refused.
// `agentPID` is the calling agent's process id, absent when the server found no agent above it.
std::optional<std::string> refusal(const Item& item, bool pinned, std::optional<int32_t> agentPID);

}  // namespace MCP

}  // namespace corvane
