// What each tool does for the calling agent.
#include "stop/outcome.h"
#include "stop/stop_rows.h"
#include "mcp/rows.h"
#include "mcp/server.h"
#include "ports/ports.h"
#include "scanner/scanner.h"
#include "stop/match.h"
#include "stop/pins.h"
#include "stop/planner.h"
#include "stop/policy.h"

namespace corvane::MCP {

namespace {

std::vector<Row> scanRows(Scanner& scanner, std::optional<int32_t> agentPID) {
  return rowsFor(settledScan(scanner), readPins(), agentPID);
}

std::string joinLines(const std::vector<Outcome>& outcomes) {
  std::string text;
  for (const auto& line : outcomeLines(outcomes, Audience::agent)) text += (text.empty() ? "" : "\n") + line;
  return text;
}

Refusal agentRule(const Pins& pins, std::optional<int32_t> agentPID) {
  return [pins, agentPID](const Item& item) { return refusal(item, isPinned(pins, item), agentPID); };
}

Reply stop(const std::string& target, Scanner& scanner, std::optional<int32_t> agentPID, const std::string& label) {
  const std::vector<Item> items = settledScan(scanner);
  const Match matched = match(target, items);
  if (matched.items.empty())
    return {"Nothing running matches " + target + ". list_running shows ids, ports and projects.", true};

  auto [outcomes, toStop] = splitByPolicy(matched.items, agentRule(readPins(), agentPID));
  const std::vector<Outcome> stopped = stopRows(toStop, scanner.startTimes(), StopMode::polite, label, scanner.tools());
  outcomes.insert(outcomes.end(), stopped.begin(), stopped.end());
  return {joinLines(outcomes), exitCode(stopped) != ExitCode::done};
}

Reply freeMemory(double gb, bool dryRun, Scanner& scanner, std::optional<int32_t> agentPID,
                 const std::string& label) {
  const std::vector<Item> candidates = freeCandidates(settledScan(scanner), agentRule(readPins(), agentPID));
  const std::vector<Item> plan = planFree(candidates, static_cast<uint64_t>(gb * 1e9));
  if (plan.empty()) return {"Nothing to free: no simulators, emulators or daemons you may stop.", false};

  if (dryRun) return {joinLines(wouldStopOutcomes(plan)), false};
  const std::vector<Outcome> outcomes = stopRows(plan, scanner.startTimes(), StopMode::polite, label, scanner.tools());
  return {joinLines(outcomes), exitCode(outcomes) != ExitCode::done};
}

Reply findFreePort(uint16_t start) {
  if (auto port = Ports::firstFree(start)) return {"Port " + std::to_string(*port) + " is free.", false};
  return {"No free port from " + std::to_string(start) + " up.", true};
}

}  // namespace

Reply callTool(const Call& call, const ScannerWhenReady& scanner, std::optional<int32_t> agentPID,
               const std::string& label) {
  switch (call.kind) {
    case Call::Kind::listRunning:
      return {listRunningText(scanRows(scanner(), agentPID), Memory::pressure()), false};
    case Call::Kind::stop:
      return stop(call.target, scanner(), agentPID, label);
    case Call::Kind::freeMemory:
      return freeMemory(call.gb, call.dryRun, scanner(), agentPID, label);
    case Call::Kind::findFreePort:
      return findFreePort(call.start);
  }
  return {"", true};
}

}  // namespace corvane::MCP
