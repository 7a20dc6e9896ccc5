// `corvane stop <id|port|project>`.
#include <string>
#include <vector>

#include "base/exit_codes.h"
#include "cli/commands.h"
#include "cli/outcome_output.h"
#include "platform/output.h"
#include "scanner/scanner.h"
#include "stop/match.h"
#include "stop/pins.h"
#include "stop/policy.h"
#include "stop/stop_rows.h"

namespace corvane {

int32_t stopCommand(const Invocation& invocation) {
  const Tools tools = Tools::load({}, nullptr, userShell());
  Scanner scanner(tools);
  const Match matched = match(invocation.target, settledScan(scanner));

  if (matched.items.empty()) {
    platform::writeErr("Nothing running matches " + invocation.target +
                       ". `corvane status` lists ids, ports and projects.\n");
    if (invocation.json) platform::writeOut("[]\n");
    return ExitCode::nothingToDo;
  }

  const Pins pins = readPins();
  auto [outcomes, toStop] = splitByPolicy(matched.items, [&](const Item& item) {
    const bool pinned = isPinned(pins, item);
    return matched.byIdOrPort ? refusalByIdOrPort(item, pinned, invocation.yes) : refusalByProject(item, pinned);
  });

  const StopMode mode = invocation.force ? StopMode::force : StopMode::polite;
  const std::vector<Outcome> stopped = invocation.dryRun
                                           ? wouldStopOutcomes(toStop)
                                           : stopRows(toStop, scanner.startTimes(), mode, "corvane stop", tools);
  outcomes.insert(outcomes.end(), stopped.begin(), stopped.end());

  platform::writeOut(invocation.json ? outcomesJSON(outcomes) : outcomesText(outcomes));

  // A single row refused for its pin or guard: "--yes" is what the user is missing. A row without a
  // stop method is refused too, but "--yes" would not help it.
  const bool needsYes = matched.byIdOrPort && toStop.empty() && matched.items.front().stop.has_value();
  if (needsYes) {
    if (!invocation.json) platform::writeOut("Pass --yes to stop it anyway.\n");
    return ExitCode::needsYes;
  }
  return exitCode(outcomes);
}

}  // namespace corvane
