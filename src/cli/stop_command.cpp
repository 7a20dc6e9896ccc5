// `corvane stop <id|port|project>`.
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/outcome_output.h"
#include "cli/output.h"
#include "cli/settled_scan.h"
#include "cli/stop_rows.h"
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
    writeErr("Nothing running matches " + target + ". `corvane status` lists ids, ports and projects.\n");
    if (json) writeOut("[]\n");
    return 2;
  }

  const Pins pins = readPins();
  std::vector<Outcome> outcomes;
  std::vector<Item> toStop;
  for (const Item& item : matched.items) {
    const bool pinned = isPinned(pins, item);
    const auto refusal = matched.byIdOrPort ? whyNot(item, pinned, yes) : whyNot(item, pinned);
    if (refusal)
      outcomes.push_back(makeOutcome(item, Outcome::State::skipped, refusal));
    else
      toStop.push_back(item);
  }

  if (dryRun) {
    for (const Item& item : toStop) outcomes.push_back(makeOutcome(item, Outcome::State::wouldStop));
  } else {
    auto stopped = stopRows(toStop, scanner.startTimes(), force, "corvane stop", tools);
    outcomes.insert(outcomes.end(), stopped.begin(), stopped.end());
  }

  writeOut(json ? outcomesJSON(outcomes) : outcomesText(outcomes));

  // A single row refused for its pin or guard: "--yes" is what the user is missing. A row without a
  // stop method is refused too, but "--yes" would not help it.
  const bool needsYes = matched.byIdOrPort && toStop.empty() && matched.items.front().stop.has_value();
  if (needsYes) {
    if (!json) writeOut("Pass --yes to stop it anyway.\n");
    return 3;
  }
  return exitCode(outcomes);
}

}  // namespace corvane
