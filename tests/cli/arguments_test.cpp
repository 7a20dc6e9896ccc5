#include "cli/arguments.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "cli/usage.h"
#include "support/process.h"

namespace corvane {
namespace {

using Action = Invocation::Action;

TEST(GigabytesTest, WhatStrtodReadsWholeBetweenZeroAnd1024) {
  for (auto [text, value] : std::vector<std::pair<std::string, double>>{
           {"2", 2}, {"0.5", 0.5}, {"+3", 3}, {"1e1", 10}, {"0x10", 16}, {"1023.99", 1023.99}})
    EXPECT_DOUBLE_EQ(parseGigabytes(text).value_or(-1), value) << text;
  for (std::string text : {"", "1024", "0", "0.0", "2GB", " 2", "\t2", "\n2", "2 ", "nan", "inf", "-inf",
                           "infinity", "1e400", "2,5", "1 2", "0x", "abc", "1e-400"})
    EXPECT_FALSE(parseGigabytes(text)) << '"' << text << '"';
}

TEST(ArgumentsTest, ActionOfEachVectorFlagsAndValuesInAnyOrder) {
  const std::vector<std::pair<std::vector<std::string>, Action>> cases = {
      // Help wins over everything else on the line.
      {{}, Action::help}, {{"stop", "--help"}, Action::help}, {{"--help", "stop", "x", "y", "z"}, Action::help},
      {{"-h", "--bogus"}, Action::help}, {{"help"}, Action::help}, {{"help", "--json"}, Action::help},
      {{"help", "status"}, Action::usage}, {{"--json"}, Action::usage}, {{"status", "extra"}, Action::usage},
      {{"stop"}, Action::usage}, {{"status", "--yes"}, Action::usage}, {{"mcp", "--json"}, Action::usage},
      {{"STATUS"}, Action::usage}, {{"free", "-2"}, Action::usage}, {{"status", "--json=true"}, Action::usage},
      {{"free", "2", "--yes"}, Action::usage}, {{"stop", "a", "b"}, Action::usage}, {{"-"}, Action::usage},
      {{"free", "2GB"}, Action::badGigabytes}, {{"free", " 2"}, Action::badGigabytes},
      {{"mcp"}, Action::mcp}, {{"status"}, Action::status}};
  for (const auto& [args, action] : cases)
    EXPECT_EQ(parseArguments(args).action, action) << testing::PrintToString(args);

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
}

// The command line as a user meets it: the real executable, its streams and exit codes.
TEST(ExecutableTest, HelpUsageAndGigabytesGoToTheirStreams) {
  const std::string usage = std::string(usageText) + "\n", gigabytes = std::string(gigabytesMessage);
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string out, err;
  };
  // Which vectors ask for which is the parser's table; here, where each answer goes.
  for (const Case& c : std::vector<Case>{{{"stop", "--help"}, 0, usage, ""},
                                         {{"help", "status"}, 64, "", usage},
                                         {{"free", "1024"}, 64, "", gigabytes}}) {
    const auto r = testing_support::runCorvane(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err;
    EXPECT_EQ(r.out, c.out);
    EXPECT_EQ(r.err, c.err);
  }
  EXPECT_EQ(gigabytes, "free takes gigabytes, e.g. `corvane free 2`.\n");
  EXPECT_EQ(std::count(usage.begin(), usage.end(), '\n'), 16);
#ifndef __APPLE__
  // Linux has no Mac and no desktop app to compare with.
  for (const char* word : {"Mac", "Blankwash"}) EXPECT_EQ(usage.find(word), std::string::npos) << word;
#endif
}

}  // namespace
}  // namespace corvane
