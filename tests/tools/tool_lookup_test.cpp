#include <filesystem>

#include <gtest/gtest.h>

#include "platform/defaults.h"
#include "tools/tools.h"
#include "support/fake_programs.h"

namespace corvane {
namespace {

using testing_support::readFile;
using testing_support::ScopedEnv;
using testing_support::writeScript;

Date hoursAgo(double hours) { return now() - std::chrono::microseconds(static_cast<int64_t>(hours * 3600e6)); }

// A machine with an empty Android SDK, a fake docker, and a login shell that finds only the tools
// it was given; every question it is asked is logged.
class ToolsLoadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = testing_support::makeTempDir("tools");
    docker = writeScript(dir + "/bin/docker", "exit 0\n");
    xcrun = writeScript(dir + "/bin/xcrun", "exit 0\n");
    adb = writeScript(dir + "/bin/adb", "exit 0\n");
  }

  // The login shell answers `command -v T` with `answers` (a shell `case` body).
  std::string shell(const std::string& answers) {
    return writeScript(dir + "/shell", "echo \"$2\" >> '" + dir + "/asked'\ncase \"$2\" in\n" + answers +
                                           "\n*) exit 1 ;;\nesac\n");
  }
  std::string asked() { return readFile(dir + "/asked"); }
  platform::DefaultsStore store() { return platform::DefaultsStore(dir + "/suite.plist"); }

  std::string dir, docker, xcrun, adb;
  ScopedEnv androidHome{"ANDROID_HOME", std::nullopt};
  ScopedEnv androidRoot{"ANDROID_SDK_ROOT", std::nullopt};
};

TEST_F(ToolsLoadTest, KnownPathsAndSDKCandidatesNeedNoShell) {
  const std::string sdk = dir + "/sdk";
  const std::string sdkAdb = writeScript(sdk + "/platform-tools/adb", "exit 0\n");
  const std::string emulator = writeScript(dir + "/other-sdk/emulator/emulator", "exit 0\n");
  ScopedEnv home("ANDROID_HOME", sdk);
  ScopedEnv root("ANDROID_SDK_ROOT", dir + "/other-sdk");
  const auto s = store();
  const Tools tools =
      Tools::load({{"docker", docker}, {"xcrun", xcrun}}, &s, shell("\"command -v adb\") echo " + adb + " ;;"));
  EXPECT_EQ(tools.paths, (std::map<std::string, std::string>{
                             {"adb", sdkAdb}, {"docker", docker}, {"emulator", emulator}, {"xcrun", xcrun}}));
  EXPECT_EQ(asked(), "");
  // The record is written back even though nothing was missed.
  EXPECT_EQ(s.readDictionary("toolMisses"), platform::DefaultsDictionary{});
}

TEST_F(ToolsLoadTest, LoginShellFindsToolsAndRemembersMissesForADay) {
  const auto s = store();
  // A record of the wrong shape counts as none: xcrun is asked for again.
  ASSERT_TRUE(s.writeDictionary("toolMisses", {{"xcrun", hoursAgo(1)}, {"adb", std::string("yesterday")}}));
  const Tools tools = Tools::load({{"docker", docker}}, &s,
                                  shell("\"command -v xcrun\") echo '  " + xcrun + "  ' ;;\n"
                                        "\"command -v adb\") echo 'Welcome back!'; echo " + adb + " ;;"));
  EXPECT_EQ(tools.paths, (std::map<std::string, std::string>{{"docker", docker}, {"xcrun", xcrun}}));
  EXPECT_EQ(asked(), "command -v xcrun\ncommand -v adb\ncommand -v emulator\n");
  auto misses = s.readDictionary("toolMisses");
  ASSERT_TRUE(misses);
  ASSERT_EQ(misses->size(), 2u);  // the greeting made adb a miss
  for (const char* tool : {"adb", "emulator"}) {
    const Date* date = std::get_if<Date>(&misses->at(tool));
    ASSERT_TRUE(date) << tool;
    EXPECT_LT(std::abs(secondsBetween(*date, now())), 5);
  }

  // Misses are trusted for a day, unless the tool's known path is no longer there.
  std::filesystem::remove(dir + "/asked");
  const Date recent = hoursAgo(23);
  ASSERT_TRUE(s.writeDictionary("toolMisses", {{"xcrun", recent}, {"adb", hoursAgo(25)}, {"emulator", recent}}));
  const std::string stale = dir + "/gone/emulator";  // known, but no longer there
  const Tools again = Tools::load({{"docker", docker}, {"emulator", stale}}, &s,
                                  shell("\"command -v xcrun\"|\"command -v adb\") echo " + adb + " ;;"));
  EXPECT_EQ(again.paths, (std::map<std::string, std::string>{{"adb", adb}, {"docker", docker}}));
  EXPECT_EQ(asked(), "command -v adb\ncommand -v emulator\n");
  misses = s.readDictionary("toolMisses");
  ASSERT_TRUE(misses);
  EXPECT_EQ(misses->count("adb"), 0u);
  // Property-list dates in XML keep whole seconds.
  EXPECT_LT(std::abs(secondsBetween(std::get<Date>(misses->at("xcrun")), recent)), 1.0);
  EXPECT_NEAR(secondsBetween(recent, std::get<Date>(misses->at("emulator"))), 23 * 3600, 5);
}

}  // namespace
}  // namespace corvane
