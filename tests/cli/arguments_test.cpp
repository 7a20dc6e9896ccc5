#include "cli/arguments.h"

#include <random>
#include <set>

#include <gtest/gtest.h>

namespace corvane {
namespace {

using Action = Invocation::Action;

TEST(GigabytesTest, AcceptsWhatStrtodReadsWhole) {
  for (auto [text, value] : std::vector<std::pair<std::string, double>>{
           {"2", 2}, {"0.5", 0.5}, {"+3", 3}, {"1e1", 10}, {"0x10", 16}, {"1023.99", 1023.99}}) {
    auto parsed = parseGigabytes(text);
    ASSERT_TRUE(parsed) << text;
    EXPECT_DOUBLE_EQ(*parsed, value) << text;
  }
}

TEST(GigabytesTest, RejectsOutOfRangeAndLeftovers) {
  for (std::string text : {"", "1024", "0", "0.0", "2GB", " 2", "\t2", "\n2", "2 ", "nan", "inf", "-inf",
                           "infinity", "1e400", "2,5", "1 2", "0x", "abc", "1e-400"})
    EXPECT_FALSE(parseGigabytes(text)) << '"' << text << '"';
}

TEST(ArgumentsTest, HelpWinsOverEverything) {
  EXPECT_EQ(parseArguments({}).action, Action::help);
  EXPECT_EQ(parseArguments({"stop", "--help"}).action, Action::help);
  EXPECT_EQ(parseArguments({"--help", "stop", "x", "y", "z"}).action, Action::help);
  EXPECT_EQ(parseArguments({"-h", "--bogus"}).action, Action::help);
  EXPECT_EQ(parseArguments({"help"}).action, Action::help);
  EXPECT_EQ(parseArguments({"help", "--json"}).action, Action::help);
  EXPECT_EQ(parseArguments({"help", "status"}).action, Action::usage);
}

TEST(ArgumentsTest, ValidatesCountsOptionsAndCase) {
  EXPECT_EQ(parseArguments({"--json"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"status", "extra"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"stop"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"status", "--yes"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"mcp", "--json"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"STATUS"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"free", "-2"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"status", "--json=true"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"free", "2GB"}).action, Action::badGigabytes);
}

TEST(ArgumentsTest, ReadsCommandsAndFlagsInAnyOrder) {
  auto status = parseArguments({"--json", "status", "--json"});
  EXPECT_EQ(status.action, Action::status);
  EXPECT_TRUE(status.json);

  auto stop = parseArguments({"--force", "stop", "--dry-run", ":3000", "--yes", "--json"});
  EXPECT_EQ(stop.action, Action::stop);
  EXPECT_EQ(stop.target, ":3000");
  EXPECT_TRUE(stop.yes && stop.force && stop.dryRun && stop.json);

  auto free = parseArguments({"free", "1.5", "--dry-run"});
  EXPECT_EQ(free.action, Action::free);
  EXPECT_DOUBLE_EQ(free.gigabytes, 1.5);
  EXPECT_TRUE(free.dryRun);
  EXPECT_FALSE(free.json);

  EXPECT_EQ(parseArguments({"free", "2", "--yes"}).action, Action::usage);
  EXPECT_EQ(parseArguments({"mcp"}).action, Action::mcp);
}

// An independent reading of the grammar's table, to judge random argument vectors against.
Action expectedAction(const std::vector<std::string>& args) {
  std::vector<std::string> words;
  std::set<std::string> options;
  for (const auto& a : args) (a.rfind("-", 0) == 0 ? (void)options.insert(a) : words.push_back(a));
  if (args.empty() || options.count("--help") || options.count("-h")) return Action::help;
  if (words == std::vector<std::string>{"help"}) return Action::help;
  if (words.empty()) return Action::usage;
  std::set<std::string> allowed;
  size_t count = 0;
  if (words[0] == "status") count = 1, allowed = {"--json"};
  else if (words[0] == "stop") count = 2, allowed = {"--yes", "--force", "--dry-run", "--json"};
  else if (words[0] == "free") count = 2, allowed = {"--dry-run", "--json"};
  else if (words[0] == "mcp") count = 1;
  else return Action::usage;
  if (words.size() != count) return Action::usage;
  for (const auto& o : options)
    if (!allowed.count(o)) return Action::usage;
  if (words[0] == "free") {
    const std::string& g = words[1];
    if (g.empty() || isspace(static_cast<unsigned char>(g[0]))) return Action::badGigabytes;
    char* end = nullptr;
    double v = strtod(g.c_str(), &end);
    if (*end != '\0' || !(v > 0 && v < 1024)) return Action::badGigabytes;
    return Action::free;
  }
  if (words[0] == "status") return Action::status;
  if (words[0] == "stop") return Action::stop;
  return Action::mcp;
}

TEST(ArgumentsTest, RandomVectorsFollowTheTable) {
  const std::vector<std::string> vocabulary = {
      "status", "stop", "free", "mcp", "help", "STATUS", "--json", "--yes", "--force", "--dry-run", "--help",
      "-h", "-", "--", "", " ", "2", "0", "1024", "0.5", "1e1", "0x10", "nan", "inf", "-2", "2GB", " 2",
      "server:42", ":3000", "+3000", "myapp", "--json=1", "-json", "\xff\xfe", "1023.9", "--verbose"};
  std::mt19937 random(20261123);
  for (int round = 0; round < 20000; ++round) {
    std::vector<std::string> args(random() % 6);
    for (auto& a : args) a = vocabulary[random() % vocabulary.size()];
    EXPECT_EQ(parseArguments(args).action, expectedAction(args)) << "round " << round;
  }
}

}  // namespace
}  // namespace corvane
