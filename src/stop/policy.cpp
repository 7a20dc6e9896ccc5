#include "stop/policy.h"

#include "detect/tables.h"

namespace corvane {

namespace {

std::string guardReason(Item::Kind kind) {
  switch (kind) {
    case Item::Kind::xcode:
      return "in use by Xcode";
    case Item::Kind::agent:
      return "an agent session";
    default:
      return "a database";
  }
}

bool isAgentDisplayName(const std::string& name) {
  for (const auto& [process, display] : agentNames)
    if (display == name) return true;
  return false;
}

std::string anotherAgent(const std::optional<std::string>& startedBy) {
  return "started by another agent (" + startedBy.value_or("unknown") + ")";
}

}  // namespace

std::optional<std::string> refusalByIdOrPort(const Item& item, bool pinned, bool yes) {
  if (!item.stop) return "Corvane doesn't stop it";
  if (yes) return std::nullopt;
  if (pinned) return "pinned";
  if (item.guarded) return guardReason(item.kind);
  return std::nullopt;
}

std::optional<std::string> refusalByProject(const Item& item, bool pinned) {
  if (!item.stop) return "Corvane doesn't stop it";
  if (pinned) return "pinned";
  if (item.guarded) return guardReason(item.kind);
  if (item.building) return "building";
  return std::nullopt;
}

namespace MCP {

std::optional<std::string> refusal(const Item& item, bool pinned, std::optional<int32_t> agentPID) {
  if (auto reason = refusalByProject(item, pinned)) return reason;
  if (item.agentPID) {
    if (agentPID && *agentPID == *item.agentPID) return std::nullopt;
    return anotherAgent(item.startedBy);
  }
  // Without a pid the row's agent can't be told apart from the caller, so an agent's name alone refuses it.
  if (item.startedBy && isAgentDisplayName(*item.startedBy)) return anotherAgent(item.startedBy);
  return std::nullopt;
}

}  // namespace MCP

}  // namespace corvane
