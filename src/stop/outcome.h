#pragma once
// The result of stopping (or deciding not to stop) one row, shared by `stop`, `free` and the MCP tools,
// with its JSON form, its line of text and the exit code of a list of them.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/exit_codes.h"
#include "detect/item.h"
#include "stop/policy.h"

namespace corvane {

struct Outcome {
  enum class State {
    stopped,       // the row is gone
    stillRunning,  // the polite stop was sent, the row outlived the wait
    failed,        // the stop could not be done
    skipped,       // the policy refused the row; nothing was sent
    wouldStop,     // dry run
  };

  std::string id;
  std::string title;
  Item::Kind kind = Item::Kind::server;
  uint64_t memory = 0;  // bytes, 0 for rows whose memory isn't counted
  State state = State::stopped;
  std::optional<std::string> reason;

  bool operator==(const Outcome&) const = default;
};

// "stopped", "still-running", "failed", "skipped", "would-stop".
std::string_view rawValue(Outcome::State state);

// The outcome of `item`: its id, title and kind, and its memory when counted.
Outcome makeOutcome(const Item& item, Outcome::State state, std::optional<std::string> reason = std::nullopt);
// A dry run's outcomes: each row would stop.
std::vector<Outcome> wouldStopOutcomes(const std::vector<Item>& rows);

// Matched rows split by a rule of the policy, both in the rows' order.
struct PolicySplit {
  std::vector<Outcome> skipped;  // what the rule refused, with its reason
  std::vector<Item> toStop;
};
PolicySplit splitByPolicy(const std::vector<Item>& rows, const Refusal& refusal);

// Keys "id", "kind", "memory", "reason" (left out when absent), "state", "title".
nlohmann::json toJSON(const Outcome& outcome);

// Who reads the lines; it picks the hint for a row still running: the force command for the user of the
// command line, a pointer to the desktop app for a coding agent.
enum class Audience { commandLine, agent };

std::string outcomeLine(const Outcome& outcome, Audience audience);
// One line per outcome, then "Freed X GB." when stopped rows freed any counted memory.
std::vector<std::string> outcomeLines(const std::vector<Outcome>& outcomes, Audience audience);

// 2 for nothing, 1 when anything failed or still runs, 0 when anything stopped or would stop, else 2.
int32_t exitCode(const std::vector<Outcome>& outcomes);

}  // namespace corvane
