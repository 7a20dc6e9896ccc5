#include "stop/outcome.h"

#include "base/gigabytes.h"

namespace corvane {

std::string_view rawValue(Outcome::State state) {
  switch (state) {
    case Outcome::State::stopped:
      return "stopped";
    case Outcome::State::stillRunning:
      return "still-running";
    case Outcome::State::failed:
      return "failed";
    case Outcome::State::skipped:
      return "skipped";
    case Outcome::State::wouldStop:
      return "would-stop";
  }
  return "failed";
}

Outcome makeOutcome(const Item& item, Outcome::State state, std::optional<std::string> reason) {
  return Outcome{item.id, item.title, item.kind, countedMemory(item), state, std::move(reason)};
}

std::vector<Outcome> wouldStopOutcomes(const std::vector<Item>& rows) {
  std::vector<Outcome> outcomes;
  outcomes.reserve(rows.size());
  for (const Item& row : rows) outcomes.push_back(makeOutcome(row, Outcome::State::wouldStop));
  return outcomes;
}

PolicySplit splitByPolicy(const std::vector<Item>& rows, const Refusal& refusal) {
  PolicySplit split;
  for (const Item& row : rows) {
    if (auto reason = refusal(row))
      split.skipped.push_back(makeOutcome(row, Outcome::State::skipped, std::move(reason)));
    else
      split.toStop.push_back(row);
  }
  return split;
}

nlohmann::json toJSON(const Outcome& outcome) {
  nlohmann::json j = {{"id", outcome.id},
                      {"kind", rawValue(outcome.kind)},
                      {"memory", outcome.memory},
                      {"state", rawValue(outcome.state)},
                      {"title", outcome.title}};
  if (outcome.reason) j["reason"] = *outcome.reason;
  return j;
}

std::string outcomeLine(const Outcome& outcome, Audience audience) {
  const std::string& title = outcome.title;
  switch (outcome.state) {
    case Outcome::State::stopped:
      return "Stopped " + title + " (" + gigabyteText(outcome.memory) + ").";
    case Outcome::State::wouldStop:
      return "Would stop " + title + " (" + gigabyteText(outcome.memory) + ").";
    case Outcome::State::stillRunning:
      if (audience == Audience::commandLine)
        return title + " is still running after 5 s. `corvane stop " + outcome.id + " --force` kills it.";
      return title + " is still running after 5 s. The user can force-stop it in Corvane.";
    case Outcome::State::failed:
      return "Couldn't stop " + title + ": " + outcome.reason.value_or("unknown error");
    case Outcome::State::skipped:
      return "Left " + title + " alone: " + outcome.reason.value_or("protected") + ".";
  }
  return {};
}

std::vector<std::string> outcomeLines(const std::vector<Outcome>& outcomes, Audience audience) {
  std::vector<std::string> lines;
  lines.reserve(outcomes.size() + 1);
  uint64_t freed = 0;
  for (const Outcome& outcome : outcomes) {
    lines.push_back(outcomeLine(outcome, audience));
    if (outcome.state == Outcome::State::stopped) freed += outcome.memory;
  }
  if (freed > 0) lines.push_back("Freed " + gigabyteText(freed) + ".");
  return lines;
}

int32_t exitCode(const std::vector<Outcome>& outcomes) {
  if (outcomes.empty()) return ExitCode::nothingToDo;
  auto any = [&](auto predicate) {
    for (const Outcome& outcome : outcomes)
      if (predicate(outcome.state)) return true;
    return false;
  };
  if (any([](Outcome::State s) { return s == Outcome::State::stillRunning || s == Outcome::State::failed; }))
    return ExitCode::failed;
  if (any([](Outcome::State s) { return s == Outcome::State::stopped || s == Outcome::State::wouldStop; }))
    return ExitCode::done;
  return ExitCode::nothingToDo;
}

}  // namespace corvane
