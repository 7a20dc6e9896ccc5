#include "activity/activity_log.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <gtest/gtest.h>

#include "support/run_program.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

Activity entry(const std::string& title) {
  Item item;
  item.title = title;
  item.kind = Item::Kind::gradle;
  item.memory = 1000;
  item.stop = Stop::signal();
  return makeActivity(item, dateFromSeconds(1'772'356'500.5), "corvane stop");
}

std::vector<Activity> entries(const std::string& prefix, int count) {
  std::vector<Activity> result;
  for (int i = 0; i < count; ++i) result.push_back(entry(prefix + std::to_string(i)));
  return result;
}

std::string contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

ActivityLog freshLog() {
  return ActivityLog{testing_support::makeTempDir("activity") + "/Corvane/activity.jsonl"};
}

TEST(ActivityLogTest, StandardLocationIsUnderTheDataDirectory) {
  EXPECT_EQ(ActivityLog::standard().path, std::string(std::getenv("XDG_DATA_HOME")) + "/Corvane/activity.jsonl");
  EXPECT_EQ(ActivityLog::standard().lockPath(), ActivityLog::standard().path + ".lock");
}

TEST(ActivityLogTest, AppendingNothingCreatesNothing) {
  const ActivityLog log = freshLog();
  log.append({});
  EXPECT_FALSE(fs::exists(fs::path(log.path).parent_path()));
  EXPECT_TRUE(log.read().empty());
}

TEST(ActivityLogTest, LinesAreCompactWithoutTrailingNewline) {
  const ActivityLog log = freshLog();
  Activity first = entry("kubectl port-forward svc/api");
  log.append({first});
  log.append({entry("second")});
  EXPECT_TRUE(fs::exists(log.lockPath()));
  const std::string text = contents(log.path);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
  EXPECT_NE(text.back(), '\n');
  EXPECT_EQ(text.find("\": "), std::string::npos);
  EXPECT_EQ(text.find(", \""), std::string::npos);
  EXPECT_NE(text.find("svc\\/api"), std::string::npos);
  const auto back = log.read();
  ASSERT_EQ(back.size(), 2u);
  EXPECT_EQ(back[0], first);
}

TEST(ActivityLogTest, FullLogDropsTheOldest) {
  const ActivityLog log = freshLog();
  log.write(entries("old", 2000));
  log.append(entries("new", 3));
  const auto all = log.read();
  ASSERT_EQ(all.size(), 2000u);
  EXPECT_EQ(all.front().title, "old3");
  EXPECT_EQ(all[1996].title, "old1999");
  EXPECT_EQ(all.back().title, "new2");
}

TEST(ActivityLogTest, CorruptLineIsDroppedAtTheNextAppend) {
  const ActivityLog log = freshLog();
  log.write({entry("a"), entry("b")});
  const std::string text = contents(log.path);
  const size_t split = text.find('\n');
  std::ofstream(log.path, std::ios::binary | std::ios::trunc)
      << text.substr(0, split) << "\n\n{\"id\": oops\n" << R"({"title": "no other keys"})" << text.substr(split);
  EXPECT_EQ(log.read().size(), 2u);

  log.append({entry("c")});
  const auto all = log.read();
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[0].title, "a");
  EXPECT_EQ(all[2].title, "c");
  const std::string rewritten = contents(log.path);
  EXPECT_EQ(std::count(rewritten.begin(), rewritten.end(), '\n'), 2);
  EXPECT_EQ(rewritten.find("oops"), std::string::npos);
}

TEST(ActivityLogTest, ConcurrentAppendsFromTwoProcessesAllLand) {
  const ActivityLog log{freshLog().path, 5000};
  std::vector<pid_t> children;
  for (const char* name : {"first-", "second-"}) {
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      // 100 read-add-write cycles of 5 entries each, racing the other process.
      for (int round = 0; round < 100; ++round) log.append(entries(name + std::to_string(round) + ".", 5));
      _exit(0);
    }
    children.push_back(pid);
  }
  for (pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const auto all = log.read();
  EXPECT_EQ(all.size(), 1000u);
  std::set<std::string> ids;
  for (const Activity& a : all) ids.insert(a.id);
  EXPECT_EQ(ids.size(), 1000u);
}

}  // namespace
}  // namespace corvane
