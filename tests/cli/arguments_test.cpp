#include "cli/arguments.h"

#include <filesystem>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <algorithm>

#include "cli/usage.h"
#include "support/fake_programs.h"
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

// Output that can't be written: to a full disk, or to a reader that has gone before the first line. A
// command says so and fails; the MCP server ends as it does at the end of its input.
TEST(ExecutableTest, OutputThatCantBeWritten) {
  const std::string dir = testing_support::makeTempDir("output");
  ASSERT_EQ(mkfifo((dir + "/gate").c_str(), 0600), 0);
  // The reader closes its end, then opens the gate; only then does the writer go on.
  const std::string script = R"(cd "$1"
{ cat gate >/dev/null; "$0" status; echo "status $?" >&2; } | { exec 0<&-; : >gate; }
{ cat gate >/dev/null; echo '{"jsonrpc":"2.0","id":1,"method":"ping"}'; } | { "$0" mcp; echo "mcp $?" >&2; } |
  { exec 0<&-; : >gate; })";
  const auto gone = testing_support::runProgram("/bin/sh", {"-c", script, CORVANE_EXE, dir});
  EXPECT_EQ(gone.err, "corvane: write error: Broken pipe\nstatus 1\nmcp 0\n");
  if (!std::filesystem::exists("/dev/full")) return;
  const auto full = testing_support::runProgram("/bin/sh", {"-c", R"("$0" status >/dev/full)", CORVANE_EXE});
  EXPECT_EQ(full.exitCode, 1);
  EXPECT_EQ(full.err, "corvane: write error: No space left on device\n");
}

}  // namespace
}  // namespace corvane
