#include "platform/child_process.h"

#include <chrono>
#include <filesystem>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/fake_programs.h"

namespace corvane::platform {
namespace {

using testing_support::makeTempDir;
using testing_support::readFile;
using testing_support::writeScript;

// A program ignoring SIGTERM is killed after the grace; a detached one runs and leaves no zombie.
TEST(ChildProcessTest, StubbornProgramKilledAfterTheGraceDetachedOneLeavesNoZombie) {
  const std::string dir = makeTempDir("child");
  const std::string script = writeScript(dir + "/stubborn", "trap '' TERM\nwhile :; do sleep 0.05; done\n");
  const auto started = std::chrono::steady_clock::now();
  EXPECT_FALSE(runCapturingOutput(script, {}, dir + "/out", 0.2, 0.3));
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(3));
  EXPECT_FALSE(std::filesystem::exists(dir + "/out"));

  ASSERT_TRUE(launchDetached(writeScript(dir + "/bg", "echo $$ > \"$1\"\n"), {dir + "/pid"}));
  EXPECT_FALSE(launchDetached(dir + "/missing", {}));
  std::string pid;
  for (int i = 0; i < 200 && pid.empty(); ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10)))
    pid = readFile(dir + "/pid");
  ASSERT_FALSE(pid.empty());
  // A zombie would keep its /proc entry until this test process ended.
  bool gone = false;
  for (int i = 0; i < 200 && !gone; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10)))
    gone = !std::filesystem::exists("/proc/" + std::to_string(std::stol(pid)));
  EXPECT_TRUE(gone);
}

}  // namespace
}  // namespace corvane::platform
