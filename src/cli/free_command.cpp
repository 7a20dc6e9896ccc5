// `corvane free <GB>`.
#include <string>
#include <vector>

#include "base/exit_codes.h"
#include "base/gigabytes.h"
#include "cli/commands.h"
#include "cli/outcome_output.h"
#include "platform/output.h"
#include "scanner/scanner.h"
#include "stop/pins.h"
#include "stop/planner.h"
#include "stop/policy.h"
#include "stop/stop_rows.h"

namespace corvane {

namespace {

uint64_t totalMemory(const std::vector<Item>& rows) {
  uint64_t total = 0;
  for (const Item& row : rows) total += row.memory;
  return total;
}

}  // namespace

int32_t freeCommand(const Invocation& invocation) {
  const Tools tools = Tools::load({}, nullptr, userShell());
  Scanner scanner(tools);
  const std::vector<Item> items = settledScan(scanner);

  const Pins pins = readPins();
  // `free` follows the project rule: what it would stop, if quiet.
  const std::vector<Item> candidates =
      freeCandidates(items, [&](const Item& item) { return refusalByProject(item, isPinned(pins, item)); });

  const double asked = invocation.gigabytes * 1e9;
  const auto target = static_cast<uint64_t>(asked);
  const std::vector<Item> plan = planFree(candidates, target);

  if (plan.empty()) {
    platform::writeOut(invocation.json
                           ? "[]\n"
                           : "Nothing to free: no simulators, emulators or daemons that aren't pinned or building.\n");
    return ExitCode::nothingToDo;
  }

  const std::vector<Outcome> outcomes =
      invocation.dryRun ? wouldStopOutcomes(plan)
                        : stopRows(plan, scanner.startTimes(), StopMode::polite, "corvane free", tools);

  if (invocation.json) {
    platform::writeOut(outcomesJSON(outcomes));
    return exitCode(outcomes);
  }
  std::string text = outcomesText(outcomes);
  // Measured against the plan, not against what the stops achieved.
  const uint64_t planned = totalMemory(plan);
  if (asked > static_cast<double>(planned))
    text += "That's " + gigabyteText(planned) + " of the " + gigabyteText(target) +
            " asked; the rest is in use, pinned or a database.\n";
  platform::writeOut(text);
  return exitCode(outcomes);
}

}  // namespace corvane
