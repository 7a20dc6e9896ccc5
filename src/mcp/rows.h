#pragma once
// What the agent-facing tools see of a scan: each item with the reason the calling agent may not stop it.
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "detect/item.h"
#include "snapshot/memory.h"

namespace corvane::MCP {

struct Row {
  Item item;
  std::optional<std::string> refusal;  // absent when the agent may stop it
};

// Pure: the rows of `items` under `pins` for the agent with `agentPID`.
std::vector<Row> rowsFor(const std::vector<Item>& items, const std::map<std::string, std::string>& pins,
                         std::optional<int32_t> agentPID);

// The list_running text: compact JSON with snake-case keys.
std::string listRunningText(const std::vector<Row>& rows, Pressure pressure);

}  // namespace corvane::MCP
