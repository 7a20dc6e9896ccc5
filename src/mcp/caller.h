#pragma once
// The coding agent that started this MCP server, found among the server's ancestors.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "snapshot/proc.h"

namespace corvane::MCP {

struct Caller {
  int32_t pid = 0;
  std::string name;
};

// Of the server's ancestors, nearest first: the nearest agent, reported as the outermost process of its
// session, so that its pid is the one its rows name. The first application above the server hides any
// agent further up.
std::optional<Caller> caller(const std::vector<Proc>& ancestors);

// "<agent> via MCP", or "An agent via MCP" when none was found.
std::string callerLabel(const std::optional<Caller>& caller);

}  // namespace corvane::MCP
