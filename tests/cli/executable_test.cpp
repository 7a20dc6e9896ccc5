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
}

}  // namespace
}  // namespace corvane
