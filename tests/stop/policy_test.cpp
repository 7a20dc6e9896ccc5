#include "stop/policy.h"

#include <map>

#include <gtest/gtest.h>

namespace corvane {
namespace {

Item row(Item::Kind kind, bool guarded = false, bool building = false) {
  Item item;
  item.id = "row:1";
  item.key = "row-key";
  item.kind = kind;
  item.title = "Row";
  item.stop = Stop::signal();
  item.guarded = guarded;
  item.building = building;
  return item;
}

TEST(PolicyTest, EngineWithoutStopMethodIsRefusedUnderEveryRule) {
  Item engine = row(Item::Kind::docker);
  engine.stop.reset();
  for (bool pinned : {false, true}) {
    EXPECT_EQ(whyNot(engine, pinned, true), "Corvane doesn't stop it");
    EXPECT_EQ(whyNot(engine, pinned, false), "Corvane doesn't stop it");
    EXPECT_EQ(whyNot(engine, pinned), "Corvane doesn't stop it");
    EXPECT_EQ(MCP::refusal(engine, pinned, 42), "Corvane doesn't stop it");
  }
}

TEST(PolicyTest, PinsAndGuardsByIdOrPortYieldToYes) {
  const Item database = row(Item::Kind::database, true);
  EXPECT_EQ(whyNot(database, false, false), "a database");
  EXPECT_EQ(whyNot(database, false, true), std::nullopt);
  EXPECT_EQ(whyNot(database, true, false), "pinned");  // pinned wins over the guard
  EXPECT_EQ(whyNot(database, true, true), std::nullopt);
  EXPECT_EQ(whyNot(row(Item::Kind::xcode, true), false, false), "in use by Xcode");
  EXPECT_EQ(whyNot(row(Item::Kind::agent, true), false, false), "an agent session");
  EXPECT_EQ(whyNot(row(Item::Kind::container, true), false, false), "a database");
  EXPECT_EQ(whyNot(row(Item::Kind::server, false, true), false, false), std::nullopt);  // a build by port
}

TEST(PolicyTest, ProjectRuleIgnoresNothing) {
  EXPECT_EQ(whyNot(row(Item::Kind::database, true), false), "a database");
  EXPECT_EQ(whyNot(row(Item::Kind::database, true), true), "pinned");
  EXPECT_EQ(whyNot(row(Item::Kind::xcode, true, true), false), "in use by Xcode");  // guard before building
  EXPECT_EQ(whyNot(row(Item::Kind::server, false, true), false), "building");
  EXPECT_EQ(whyNot(row(Item::Kind::server), false), std::nullopt);
}

TEST(PolicyTest, AgentsMayStopOnlyTheirOwnAgentRows) {
  Item mine = row(Item::Kind::server);
  mine.agentPID = 4242;
  mine.startedBy = "Claude Code";
  EXPECT_EQ(MCP::refusal(mine, false, 4242), std::nullopt);
  EXPECT_EQ(MCP::refusal(mine, false, std::nullopt), "started by another agent (Claude Code)");

  Item codex = row(Item::Kind::server);
  codex.agentPID = 777;
  codex.startedBy = "Codex";
  EXPECT_EQ(MCP::refusal(codex, false, 4242), "started by another agent (Codex)");
  codex.startedBy.reset();
  EXPECT_EQ(MCP::refusal(codex, false, 4242), "started by another agent (unknown)");

  Item named = row(Item::Kind::server);
  named.startedBy = "Claude Code";  // an agent's name but no pid: refused even for that agent
  EXPECT_EQ(MCP::refusal(named, false, 4242), "started by another agent (Claude Code)");
  named.startedBy = "Gemini CLI";
  EXPECT_EQ(MCP::refusal(named, false, 4242), "started by another agent (Gemini CLI)");
  named.startedBy = "iTerm";
  EXPECT_EQ(MCP::refusal(named, false, 4242), std::nullopt);
  named.startedBy.reset();
  EXPECT_EQ(MCP::refusal(named, false, std::nullopt), std::nullopt);

  mine.building = true;  // the project rule comes first
  EXPECT_EQ(MCP::refusal(mine, false, 4242), "building");
  mine.building = false;
  EXPECT_EQ(MCP::refusal(mine, true, 4242), "pinned");
}

TEST(PolicyTest, PinnedIsByExactKey) {
  const Item item = row(Item::Kind::simulator);
  EXPECT_TRUE(isPinned(item, std::map<std::string, std::string>{{"row-key", "x"}}));
  EXPECT_FALSE(isPinned(item, std::map<std::string, std::string>{{"Row-key", "x"}}));
  EXPECT_FALSE(isPinned(item, std::map<std::string, std::string>{}));
}

}  // namespace
}  // namespace corvane
