#include "activity/activity_log.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include <gtest/gtest.h>

#include "support/fake_programs.h"
#include "support/process.h"

namespace corvane {
namespace {

using testing_support::readFile;

std::vector<Activity> entries(const std::string& prefix, int count) {
  std::vector<Activity> result;
  for (int i = 0; i < count; ++i) {
    Item item{.kind = Item::Kind::tunnel, .title = prefix + std::to_string(i)};
    result.push_back(makeActivity(item, dateFromSeconds(1'772'356'500.5), "corvane stop"));
  }
  return result;
}

TEST(ActivityLogTest, CompactLinesNoCorruptLinesRacingAppendsAllLandNoMoreThanTheMost) {
  const ActivityLog log{testing_support::makeTempDir("activity") + "/Corvane/activity.jsonl"};
  log.append({});
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(log.path).parent_path()));
  // A stopped container: its memory no longer counts, and it can be started again.
  Item container{.kind = Item::Kind::container, .title = "shop/db", .memory = 300, .counted = false};
  container.stop = Stop::containers({"c0ffee"});
  const Activity first = makeActivity(container, dateFromSeconds(1'772'356'500.5), "Codex via MCP");
  EXPECT_EQ(first.memory, 0u);
  EXPECT_EQ(first.undo, Undo::start({"c0ffee"}));
  log.append({first});
  log.append(entries("second", 1));
  EXPECT_TRUE(std::filesystem::exists(log.lockPath()));
  const std::string text = readFile(log.path);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
  EXPECT_NE(text.back(), '\n');
  EXPECT_EQ(text.find("\": "), std::string::npos);
  EXPECT_NE(text.find("shop\\/db"), std::string::npos);
  EXPECT_EQ(log.read().front(), first);  // its id a well-formed upper-case UUID

  // Lines that don't decode are skipped, and gone once the next append rewrites the file.
  const size_t split = text.find('\n');
  std::ofstream(log.path, std::ios::binary) << text.substr(0, split) << "\n\n{\"id\": oops\n{}" << text.substr(split);
  EXPECT_EQ(log.read().size(), 2u);
  log.append(entries("new", 1));
  const std::string rewritten = readFile(log.path);
  EXPECT_EQ(std::count(rewritten.begin(), rewritten.end(), '\n'), 2);
  EXPECT_EQ(rewritten.find("oops"), std::string::npos);
  EXPECT_EQ(log.read().back().title, "new0");

  // Appends from two processes all land: 100 read-add-write cycles of 5 entries each, racing.
  std::vector<std::unique_ptr<testing_support::Process>> writers;
  for (const std::string name : {"first", "second"})
    writers.push_back(std::make_unique<testing_support::Process>([&log, name] {
      for (int round = 0; round < 100; ++round) log.append(entries(name + std::to_string(round) + ".", 5));
    }));
  for (const auto& writer : writers) EXPECT_EQ(writer->waitExit(60), 0);
  std::set<std::string> ids;
  for (const Activity& a : log.read())
    if (a.title.find('.') != std::string::npos) ids.insert(a.id);
  EXPECT_EQ(ids.size(), 1000u);

  // A full log drops the oldest.
  log.write(entries("old", 2000));
  log.append(entries("new", 3));
  const auto all = log.read();
  ASSERT_EQ(all.size(), 2000u);
  EXPECT_EQ(all.front().title, "old3");
  EXPECT_EQ(all.back().title, "new2");
}

}  // namespace
}  // namespace corvane
