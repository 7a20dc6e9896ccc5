#include "stop/outcome.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using State = Outcome::State;

Outcome outcome(State state, uint64_t memory = 1'250'000'000, std::optional<std::string> reason = std::nullopt) {
  return Outcome{"server:41", "Vite :5173", Item::Kind::server, memory, state, std::move(reason)};
}

TEST(OutcomeTest, LineOfEveryStateFreedLineExitCodeAndJSONForm) {
  for (Audience audience : {Audience::commandLine, Audience::agent}) {
    EXPECT_EQ(outcomeLine(outcome(State::stopped), audience), "Stopped Vite :5173 (1.2 GB).");
    EXPECT_EQ(outcomeLine(outcome(State::wouldStop, 0), audience), "Would stop Vite :5173 (0.0 GB).");
    EXPECT_EQ(outcomeLine(outcome(State::failed, 0, "Gone."), audience), "Couldn't stop Vite :5173: Gone.");
    EXPECT_EQ(outcomeLine(outcome(State::failed), audience), "Couldn't stop Vite :5173: unknown error");
    EXPECT_EQ(outcomeLine(outcome(State::skipped, 0, "pinned"), audience), "Left Vite :5173 alone: pinned.");
    EXPECT_EQ(outcomeLine(outcome(State::skipped), audience), "Left Vite :5173 alone: protected.");
  }
  EXPECT_EQ(outcomeLine(outcome(State::stillRunning), Audience::commandLine),
            "Vite :5173 is still running after 5 s. `corvane stop server:41 --force` kills it.");
  EXPECT_EQ(outcomeLine(outcome(State::stillRunning), Audience::agent),
            "Vite :5173 is still running after 5 s. The user can force-stop it in Corvane.");

  const std::vector<Outcome> mixed = {outcome(State::stopped, 1'200'000'000), outcome(State::stopped, 0),
                                      outcome(State::stillRunning, 5'000'000'000), outcome(State::stopped, 60'000'000)};
  EXPECT_EQ(outcomeLines(mixed, Audience::commandLine).back(), "Freed 1.3 GB.");
  EXPECT_EQ(exitCode(mixed), 1);
  EXPECT_EQ(exitCode({}), 2);
  EXPECT_EQ(exitCode({outcome(State::skipped)}), 2);
  EXPECT_EQ(exitCode({outcome(State::skipped), outcome(State::wouldStop)}), 0);
  EXPECT_EQ(exitCode({outcome(State::failed), outcome(State::skipped)}), 1);

  EXPECT_EQ(toJSON(outcome(State::stillRunning, 7)),
            nlohmann::json::parse(R"({"id": "server:41", "kind": "server", "memory": 7, "state": "still-running",
                                      "title": "Vite :5173"})"));
  EXPECT_EQ(toJSON(outcome(State::wouldStop))["state"], "would-stop");  // free's own test runs as another user
  EXPECT_EQ(toJSON(outcome(State::skipped, 0, "pinned"))["reason"], "pinned");
  Item container{.id = "container:ab", .kind = Item::Kind::container, .memory = 300, .counted = false};
  EXPECT_EQ(makeOutcome(container, State::stopped).memory, 0u);
}

}  // namespace
}  // namespace corvane
