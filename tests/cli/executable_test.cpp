// The command line as a user meets it: the real executable, its streams and exit codes.
#include <gtest/gtest.h>

#include "cli/usage.h"
#include "support/run_program.h"

namespace corvane {
namespace {

using testing_support::runCorvane;

const std::string usage = std::string(usageText) + "\n";
const std::string gigabytes = "free takes gigabytes, e.g. `corvane free 2`.\n";

TEST(ExecutableTest, HelpGoesToStandardOutput) {
  for (auto args : std::vector<std::vector<std::string>>{
           {}, {"--help"}, {"help"}, {"-h"}, {"stop", "--help"}, {"--help", "stop", "x", "y", "z"}}) {
    auto r = runCorvane(args);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out, usage);
    EXPECT_EQ(r.err, "");
  }
}

TEST(ExecutableTest, UsageErrorsGoToStandardError) {
  for (auto args : std::vector<std::vector<std::string>>{{"--json"},
                                                         {"help", "status"},
                                                         {"status", "extra"},
                                                         {"stop"},
                                                         {"status", "--yes"},
                                                         {"mcp", "--json"},
                                                         {"STATUS"},
                                                         {"free", "-2"}}) {
    auto r = runCorvane(args);
    EXPECT_EQ(r.exitCode, 64) << args[0];
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, usage);
  }
}

TEST(ExecutableTest, BadGigabytesHaveTheirOwnMessage) {
  for (std::string value : {"1024", "0", "2GB", " 2", "2 ", "nan", "inf"}) {
    auto r = runCorvane({"free", value});
    EXPECT_EQ(r.exitCode, 64) << value;
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, gigabytes) << value;
  }
}

TEST(ExecutableTest, UsageTextIsSixteenLinesWithDescriptionsInColumn36) {
  std::vector<std::string> lines;
  std::string text(usageText);
  size_t pos = 0;
  for (size_t nl; (nl = text.find('\n', pos)) != std::string::npos; pos = nl + 1)
    lines.push_back(text.substr(pos, nl - pos));
  lines.push_back(text.substr(pos));
  ASSERT_EQ(lines.size(), 16u);
  for (int i : {3, 4, 6, 8}) {
    EXPECT_EQ(lines[i].find_first_not_of(' ', 2), 2u);
    size_t gap = lines[i].find("   ");
    EXPECT_EQ(lines[i].find_first_not_of(' ', gap), 35u) << lines[i];
  }
}

}  // namespace
}  // namespace corvane
