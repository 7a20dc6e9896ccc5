#include "mcp/rows.h"

#include "base/json_text.h"
#include "stop/pins.h"
#include "stop/policy.h"

namespace corvane::MCP {

using nlohmann::json;

std::vector<Row> rowsFor(const std::vector<Item>& items, const std::map<std::string, std::string>& pins,
                         std::optional<int32_t> agentPID) {
  std::vector<Row> rows;
  rows.reserve(items.size());
  for (const auto& item : items) rows.push_back({item, refusal(item, isPinned(pins, item), agentPID)});
  return rows;
}

std::string listRunningText(const std::vector<Row>& rows, Pressure pressure) {
  uint64_t counted = 0;
  json list = json::array();
  for (const auto& [item, refusal] : rows) {
    counted += countedMemory(item);
    json row = {{"id", item.id},
                {"title", item.title},
                {"kind", rawValue(item.kind)},
                {"memory_mb", static_cast<int64_t>(item.memory / 1'000'000)},
                {"ports", item.ports},
                {"building", item.building},
                {"can_stop", !refusal.has_value()}};
    if (item.project) row["project"] = *item.project;
    if (item.startedBy) row["started_by"] = *item.startedBy;
    if (refusal) row["why_not"] = *refusal;
    list.push_back(std::move(row));
  }
  json running = {{"pressure", pressureName(pressure)},
                  {"dev_stack_gb", std::round(static_cast<double>(counted) / 1e8) / 10},
                  {"rows", std::move(list)}};
  return encodeCompactJSON(running).value_or(std::string());
}

}  // namespace corvane::MCP
