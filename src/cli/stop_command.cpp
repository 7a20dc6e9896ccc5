// `corvane stop <id|port|project>`.
#include <string>
#include <vector>

#include "cli/commands.h"
#include "base/exit_codes.h"
#include "cli/outcome_output.h"
#include "platform/output.h"
#include "scanner/settled_scan.h"
#include "stop/stop_rows.h"
#include "scanner/scanner.h"
#include "stop/match.h"
#include "stop/pins.h"
#include "stop/policy.h"

namespace corvane {

int32_t stopCommand(const std::string& target, bool yes, bool force, bool dryRun, bool json) {
  const Tools tools = Tools::load({}, nullptr, userShell());
  Scanner scanner(tools);
  const Match matched = match(target, settledScan(scanner));

  if (matched.items.empty()) {
    platform::writeErr("Nothing running matches " + target + ". `corvane status` lists ids, ports and projects.\n");
    if (json) platform::writeOut("[]\n");
    return ExitCode::nothingToDo;
  }

  const Pins pins = readPins();
  auto [outcomes, toStop] = splitByPolicy(matched.items, [&](const Item& item) {
    const bool pinned = isPinned(pins, item);
    return matched.byIdOrPort ? whyNot(item, pinned, yes) : whyNot(item, pinned);
  });

  const StopMode mode = force ? StopMode::force : StopMode::polite;
  const std::vector<Outcome> stopped =
      dryRun ? wouldStopOutcomes(toStop) : stopRows(toStop, scanner.startTimes(), mode, "corvane stop", tools);
  outcomes.insert(outcomes.end(), stopped.begin(), stopped.end());

  platform::writeOut(json ? outcomesJSON(outcomes) : outcomesText(outcomes));

  // A single row refused for its pin or guard: "--yes" is what the user is missing. A row without a
  // stop method is refused too, but "--yes" would not help it.
  const bool needsYes = matched.byIdOrPort && toStop.empty() && matched.items.front().stop.has_value();
  if (needsYes) {
    if (!json) platform::writeOut("Pass --yes to stop it anyway.\n");
    return ExitCode::needsYes;
  }
  return exitCode(outcomes);
}

}  // namespace corvane
