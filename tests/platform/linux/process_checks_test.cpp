// What the stopper asks about single processes.
#include "platform/process_table.h"

#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "support/child_process.h"

namespace corvane::platform {
namespace {

TEST(ProcessChecksTest, GoneOnceExitedEvenBeforeReaped) {
  testing_support::ChildProcess sleeper("/bin/sleep", {"sleep", "60"});
  ASSERT_GT(sleeper.pid(), 0);
  EXPECT_FALSE(processGone(sleeper.pid()));
  kill(sleeper.pid(), SIGTERM);
  bool gone = false;
  for (int i = 0; i < 200 && !gone; ++i) {
    gone = processGone(sleeper.pid());
    if (!gone) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_TRUE(gone);  // a zombie: not reaped until the test lets go of it
  EXPECT_TRUE(processGone(0x7ffffff0));
}

TEST(ProcessChecksTest, OwnerIsTheRealUserAndTheExecutable) {
  const auto self = processOwner(getpid());
  ASSERT_TRUE(self);
  EXPECT_EQ(self->realUid, getuid());
  EXPECT_EQ(self->path, ownExecutablePath());
  EXPECT_FALSE(processOwner(0x7ffffff0));
}

}  // namespace
}  // namespace corvane::platform
