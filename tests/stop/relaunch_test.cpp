// The undo of a logged stop, through fake tools.
#include <unistd.h>

#include <gtest/gtest.h>

#include "activity/undo.h"
#include "tools/tools.h"
#include "support/fake_programs.h"

namespace corvane {
namespace {

using testing_support::readFile;
using testing_support::writeScript;

TEST(RelaunchTest, EachRecordThroughItsTool) {
  const std::string dir = testing_support::makeTempDir("relaunch");
  const std::string log = dir + "/log";
  Tools tools, broken, elsewhere;
  for (const char* tool : {"xcrun", "docker", "emulator"}) {
    tools.paths[tool] = writeScript(dir + "/" + tool, "echo \"$0 $@\" >> " + log + "\n");
    broken.paths[tool] = writeScript(dir + "/broken-" + tool, "exit 1\n");
  }
  broken.paths["emulator"] = dir + "/missing";
  elsewhere.paths["adb"] = tools.paths["xcrun"];

  EXPECT_TRUE(Undo::boot("UDID-1").perform(tools));
  EXPECT_TRUE(Undo::start({"a1", "b2"}).perform(tools));
  EXPECT_TRUE(Undo::avd("Pixel_8").perform(tools));
  // The emulator is left to run on its own; give it a moment to write its line.
  for (int i = 0; i < 200 && readFile(log).find("-avd") == std::string::npos; ++i) usleep(10'000);
  EXPECT_EQ(readFile(log), dir + "/xcrun simctl boot UDID-1\n" + dir + "/docker start a1 b2\n" + dir +
                               "/emulator -avd Pixel_8\n");

  for (const Undo& undo : {Undo::boot("UDID-1"), Undo::start({"a1"}), Undo::avd("Pixel_8")}) {
    EXPECT_FALSE(undo.perform(broken));
    EXPECT_FALSE(undo.perform(elsewhere));
    EXPECT_FALSE(undo.perform(Tools{}));
  }
}

}  // namespace
}  // namespace corvane
