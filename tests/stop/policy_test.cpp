#include "stop/policy.h"

#include <fstream>

#include <gtest/gtest.h>

#include "platform/defaults.h"
#include "stop/pins.h"
#include "support/fake_programs.h"

namespace corvane {
namespace {

Item row(Item::Kind kind, bool guarded = false, bool building = false) {
  return {.id = "row:1", .key = "row-key", .kind = kind, .title = "Row", .stop = Stop::signal(), .guarded = guarded,
          .building = building};
}

TEST(PolicyTest, FirstRuleThatAppliesDecidesAgentsStopOnlyWhatTheyStarted) {
  // An engine without a stop method is refused under every rule.
  Item engine = row(Item::Kind::docker);
  engine.stop.reset();
  for (bool pinned : {false, true})
    for (auto reason :
         {refusalByIdOrPort(engine, pinned, true), refusalByProject(engine, pinned), MCP::refusal(engine, pinned, 1)})
      EXPECT_EQ(reason, "Corvane doesn't stop it");
  const Item database = row(Item::Kind::database, true);
  EXPECT_EQ(refusalByIdOrPort(database, false, false), "a database");
  EXPECT_EQ(refusalByIdOrPort(database, true, false), "pinned");
  EXPECT_EQ(refusalByIdOrPort(database, true, true), std::nullopt);
  EXPECT_EQ(refusalByProject(database, true), "pinned");
  EXPECT_EQ(refusalByProject(database, false), "a database");  // "--yes" has no say by project
  EXPECT_EQ(refusalByIdOrPort(row(Item::Kind::xcode, true), false, false), "in use by Xcode");
  EXPECT_EQ(refusalByProject(row(Item::Kind::agent, true, true), false), "an agent session");
  EXPECT_EQ(refusalByIdOrPort(row(Item::Kind::container, true), false, false), "a database");
  const Item build = row(Item::Kind::server, false, true);
  EXPECT_EQ(refusalByIdOrPort(build, false, false), std::nullopt);
  EXPECT_EQ(refusalByProject(build, false), "building");

  auto started = [](std::optional<int32_t> pid, std::optional<std::string> by) {
    Item item = row(Item::Kind::server);
    item.agentPID = pid;
    item.startedBy = std::move(by);
    return item;
  };
  EXPECT_EQ(MCP::refusal(started(4242, "Codex"), false, 4242), std::nullopt);
  EXPECT_EQ(MCP::refusal(started(4242, "Codex"), false, std::nullopt), "started by another agent (Codex)");
  EXPECT_EQ(MCP::refusal(started(777, "Codex"), false, 4242), "started by another agent (Codex)");
  EXPECT_EQ(MCP::refusal(started(777, std::nullopt), false, 4242), "started by another agent (unknown)");
  EXPECT_EQ(MCP::refusal(started(std::nullopt, "Claude Code"), false, 4242), "started by another agent (Claude Code)");
  EXPECT_EQ(MCP::refusal(started(std::nullopt, "iTerm"), false, 4242), std::nullopt);
  EXPECT_EQ(MCP::refusal(started(std::nullopt, std::nullopt), false, std::nullopt), std::nullopt);
  EXPECT_EQ(MCP::refusal(started(4242, "Codex"), true, 4242), "pinned");
}

TEST(PinsTest, StringValuesOnlyAndKeysAsWritten) {
  const std::string file = testing_support::makeTempDir("pins") + "/suite.plist";
  const platform::DefaultsStore suite(file);
  EXPECT_TRUE(readPins(suite).empty());  // no suite file yet
  ASSERT_TRUE(suite.writeDictionary("pins", {{"db:postgres:5432", std::string("PostgreSQL")}, {"x", std::string()}}));
  const Pins pins = readPins(suite);
  EXPECT_EQ(pins, (Pins{{"db:postgres:5432", "PostgreSQL"}, {"x", ""}}));
  EXPECT_TRUE(isPinned(pins, {.key = "db:postgres:5432"}));
  EXPECT_FALSE(isPinned(pins, {.key = "DB:postgres:5432"}));

  // One value of another type means no pins at all.
  std::ofstream(file) << "<plist version=\"1.0\"><dict><key>pins</key><dict><key>a</key><string>x</string>"
                         "<key>b</key><integer>1</integer></dict></dict></plist>";
  EXPECT_TRUE(readPins(suite).empty());
  std::ofstream(file) << "<plist version=\"1.0\"><dict><key>pins</key><array/></dict></plist>";
  EXPECT_TRUE(readPins(suite).empty());
}

}  // namespace
}  // namespace corvane
