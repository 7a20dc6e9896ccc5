#include <csignal>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "platform/child_process.h"
#include "platform/interrupts.h"
#include "platform/process_table.h"
#include "tools/tools.h"
#include "support/fake_programs.h"
#include "support/process.h"

namespace corvane {
namespace {

using testing_support::writeScript;

// Nothing comes back from a program that can't start or that the time-out ends, no output file is left
// behind by any run, and runs at the same time keep their own output.
TEST(RunTest, StatusAndStandardOutputOrNothing) {
  // The output files go to a temporary directory of this test's own, so that what other tests leave
  // running can't put files among those it counts.
  const std::string dir = testing_support::makeTempDir("run");
  const testing_support::ScopedEnv tmpdir("TMPDIR", dir);
  const std::string tool =
      writeScript(dir + "/tool", "sleep 0.05; printf '%s|' \"$@\"; echo err >&2; read l && echo in; exit $3\n");
  std::vector<std::optional<Tools::Output>> results(8);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < results.size(); ++i)
    threads.emplace_back([&, i] { results[i] = run(tool, {"a b", "", std::to_string(i)}, 5); });
  for (auto& thread : threads) thread.join();
  for (size_t i = 0; i < results.size(); ++i) {
    ASSERT_TRUE(results[i]);
    EXPECT_EQ(results[i]->status, static_cast<int32_t>(i));
    EXPECT_EQ(results[i]->data, "a b||" + std::to_string(i) + "|");
  }

  // The time-out sends SIGTERM: a program that exits by itself on it gives its own status.
  EXPECT_FALSE(run(writeScript(dir + "/slow", "echo started; exec sleep 10\n"), {}, 0.2));
  const auto polite = run(writeScript(dir + "/polite", "trap 'echo bye; exit 7' TERM\nwhile :; do sleep 0.05; done\n"),
                          {}, 0.3);
  ASSERT_TRUE(polite);
  EXPECT_EQ(polite->status, 7);
  EXPECT_EQ(polite->data, "bye\n");

  const std::string plain = writeScript(dir + "/plain", "exit 0\n");
  std::filesystem::permissions(plain, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_FALSE(run(plain, {}, 1));
  EXPECT_FALSE(run(dir + "/missing", {}, 1));
  for (const auto& entry : std::filesystem::directory_iterator(dir))
    EXPECT_FALSE(entry.path().filename().string().starts_with("corvane-")) << entry.path();
  testing_support::ScopedEnv tmp("TMPDIR", dir + "/missing");
  EXPECT_FALSE(run(writeScript(dir + "/ok", "exit 0\n"), {}, 1));
}

bool goneSoon(pid_t pid) {
  for (int i = 0; i < 200 && !platform::processGone(pid); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return platform::processGone(pid);
}

// A program ignoring SIGTERM is killed after the grace, and what a timed-out program left in the
// background goes with it, whether it minds SIGTERM or not; a detached one runs and leaves no zombie.
TEST(RunTest, StubbornProgramKilledAfterTheGraceDetachedOneLeavesNoZombie) {
  const std::string dir = testing_support::makeTempDir("child");
  const std::string script = writeScript(dir + "/stubborn", "trap '' TERM\nwhile :; do sleep 0.05; done\n");
  const auto started = std::chrono::steady_clock::now();
  EXPECT_FALSE(platform::runCapturingOutput(script, {}, dir + "/out", 0.2, 0.3));
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(3));
  EXPECT_FALSE(std::filesystem::exists(dir + "/out"));
  for (const std::string background : {"sleep 30", "sh -c \"trap '' TERM; exec sleep 30\""}) {
    const std::string shell =
        writeScript(dir + "/shell", background + " &\necho $! > \"$1\".part && mv \"$1\".part \"$1\"\nwait\n");
    EXPECT_FALSE(platform::runCapturingOutput(shell, {dir + "/bg"}, dir + "/out", 0.3, 2));
    const std::string pid = testing_support::readFile(dir + "/bg");
    ASSERT_FALSE(pid.empty()) << background;
    EXPECT_TRUE(goneSoon(std::stoi(pid))) << background;
    std::filesystem::remove(dir + "/bg");
  }

  ASSERT_TRUE(launchDetached(writeScript(dir + "/bg", "echo $$ > \"$1\"\n"), {dir + "/pid"}));
  EXPECT_FALSE(launchDetached(dir + "/missing", {}));
  std::string pid;
  for (int i = 0; i < 200 && pid.empty(); ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10)))
    pid = testing_support::readFile(dir + "/pid");
  ASSERT_FALSE(pid.empty());
  // A zombie would stay until this test process ended.
  bool gone = false;
  for (int i = 0; i < 200 && !gone; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10)))
    gone = kill(std::stoi(pid), 0) != 0;
  EXPECT_TRUE(gone);
}

// A second Ctrl-C while a stop holds the first ends the program at once, and the programs it runs,
// however they take SIGTERM, with it.
TEST(RunTest, ASecondInterruptEndsTheProgramAndItsRunsAtOnce) {
  const std::string dir = testing_support::makeTempDir("interrupted");
  const std::string stubborn = writeScript(
      dir + "/stubborn", "trap '' TERM\necho $$ > \"$1\".part && mv \"$1\".part \"$1\"\nwhile :; do sleep 1; done\n");
  testing_support::Process program([&] {
    platform::catchInterrupts();
    const platform::InterruptHold stopping;
    std::thread([&] { platform::runCapturingOutput(stubborn, {dir + "/pid"}, dir + "/out", 60, 60); }).detach();
    while (!std::filesystem::exists(dir + "/pid")) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    raise(SIGINT);
    raise(SIGINT);
    std::this_thread::sleep_for(std::chrono::seconds(60));
  });
  EXPECT_EQ(program.waitExit(), 130);
  const std::string pid = testing_support::readFile(dir + "/pid");
  ASSERT_FALSE(pid.empty());
  EXPECT_TRUE(goneSoon(std::stoi(pid)));
}

}  // namespace
}  // namespace corvane
