// The command line as a user meets it: the real executable, its streams and exit codes.
#include <gtest/gtest.h>

#include "cli/usage.h"
#include "support/process.h"

namespace corvane {
namespace {

TEST(ExecutableTest, HelpUsageAndGigabytesGoToTheirStreams) {
  const std::string usage = std::string(usageText) + "\n", gigabytes = std::string(gigabytesMessage);
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string out, err;
  };
  for (const Case& c : std::vector<Case>{{{}, 0, usage, ""},
                                         {{"stop", "--help"}, 0, usage, ""},
                                         {{"help", "status"}, 64, "", usage},
                                         {{"STATUS"}, 64, "", usage},
                                         {{"free", "1024"}, 64, "", gigabytes},
                                         {{"free", "2 "}, 64, "", gigabytes}}) {
    const auto r = testing_support::runCorvane(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err;
    EXPECT_EQ(r.out, c.out);
    EXPECT_EQ(r.err, c.err);
  }
  EXPECT_EQ(gigabytes, "free takes gigabytes, e.g. `corvane free 2`.\n");
}

TEST(ExecutableTest, UsageTextIsSixteenLinesWithDescriptionsInColumn36) {
  std::vector<std::string> lines;
  const std::string text(usageText);
  size_t pos = 0;
  for (size_t nl; (nl = text.find('\n', pos)) != std::string::npos; pos = nl + 1)
    lines.push_back(text.substr(pos, nl - pos));
  lines.push_back(text.substr(pos));
  ASSERT_EQ(lines.size(), 16u);
  for (int i : {3, 4, 6, 8}) {
    EXPECT_EQ(lines[i].find_first_not_of(' ', 2), 2u);
    EXPECT_EQ(lines[i].find_first_not_of(' ', lines[i].find("   ")), 35u) << lines[i];
  }
}

}  // namespace
}  // namespace corvane
