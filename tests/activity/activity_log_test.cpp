#include "activity/activity_log.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <set>
#include <unistd.h>

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

TEST(ActivityLogTest, CompactLinesOtherWritersLinesKeptRacingAppendsAllLandNoMoreThanTheMost) {
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

  // Lines that aren't JSON objects are skipped, and dropped at the next append. Every JSON object stays in
  // its place byte for byte, whether this build decodes it or not: a newer app's kind, key or finer date.
  const size_t split = text.find('\n');
  std::string newer = text.substr(0, split);
  newer.replace(newer.find("794049300.5"), 11, "794049300.123456789");
  newer.insert(newer.size() - 1, ",\"pinned\":true");
  const std::string kept = newer + "\n{}" + text.substr(split) + "\n{\"kind\":\"hologram\"}";
  std::ofstream(log.path, std::ios::binary) << newer << "\n\n{\"id\": oops\n{}" << text.substr(split)
                                            << "\n{\"kind\":\"hologram\"}\n[1]";
  EXPECT_EQ(log.read().size(), 2u);
  log.append(entries("new", 1));
  const std::string rewritten = readFile(log.path);
  EXPECT_EQ(rewritten.substr(0, kept.size() + 1), kept + "\n");
  EXPECT_EQ(std::count(rewritten.begin(), rewritten.end(), '\n'), 4);
  EXPECT_EQ(log.read().back().title, "new0");

  // A log that can't be read is left as it is, without the new entries: writing would lose the old ones.
  // Root reads any file, so the append runs as nobody then, in folders nobody may enter and write.
  const std::string testRoot = std::filesystem::path(std::getenv("TMPDIR")).parent_path();
  for (auto folder = std::filesystem::path(log.path).parent_path(); folder.string().starts_with(testRoot);
       folder = folder.parent_path())
    std::filesystem::permissions(folder, std::filesystem::perms::others_exec, std::filesystem::perm_options::add);
  std::filesystem::permissions(std::filesystem::path(log.path).parent_path(), std::filesystem::perms::all);
  std::filesystem::permissions(log.path, std::filesystem::perms::none);
  testing_support::Process locked([&log] {
    if (getuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0)) _exit(2);
    log.append(entries("lost", 1));
  });
  EXPECT_EQ(locked.waitExit(), 0);
  EXPECT_EQ(readFile(log.path), rewritten);
  std::filesystem::permissions(log.path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

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

  // A full log drops the oldest lines, counting those this build can't decode.
  log.write(entries("old", 2000));
  const std::string full = readFile(log.path);
  const size_t middle = full.find('\n', full.size() / 2) + 1;
  std::ofstream(log.path, std::ios::binary) << full.substr(0, middle) << "{}\n" << full.substr(middle);
  log.append(entries("new", 3));
  const std::string capped = readFile(log.path);
  EXPECT_EQ(std::count(capped.begin(), capped.end(), '\n'), 1999);
  const auto all = log.read();
  ASSERT_EQ(all.size(), 1999u);
  EXPECT_EQ(all.front().title, "old4");
  EXPECT_EQ(all.back().title, "new2");
}

}  // namespace
}  // namespace corvane
