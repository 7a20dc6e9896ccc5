// What the stopper asks about single processes.
#include "platform/process_table.h"

#include <fstream>
#include <memory>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/signals.h"
#include "stop/stopper.h"
#include "support/process.h"

namespace corvane::platform {
namespace {

using testing_support::Process;

// A new process that is given `pid`, through the pid the kernel handed out last (root only); null
// when that can't be done, or other processes keep taking the pid first.
std::unique_ptr<Process> sleeperWithPid(pid_t pid) {
  for (int attempt = 0; attempt < 50; ++attempt) {
    {
      std::ofstream last("/proc/sys/kernel/ns_last_pid");
      if (!(last << pid - 1 << std::flush)) return nullptr;
    }
    auto child = std::make_unique<Process>("/bin/sleep", std::vector<std::string>{"60"});
    if (child->pid() == pid) return child;
  }
  return nullptr;
}

// The scan saw one process; by the stop its pid names another. Whatever the stop, that other process
// is never signalled, and the scanned one counts as gone.
TEST(ProcessChecksTest, AReusedPidIsNeverSignalled) {
  if (getuid() != 0) GTEST_SKIP() << "needs root to choose the next pid";
  auto first = std::make_unique<Process>("/bin/sleep", std::vector<std::string>{"60"});
  const ScannedProcess seen{first->pid(), processStarted(first->pid()).value_or(Date{})};
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // start times count in clock ticks
  first.reset();  // killed and reaped: its pid is free
  const auto reuser = sleeperWithPid(seen.pid);
  if (!reuser) GTEST_SKIP() << "could not get pid " << seen.pid << " given out again";
  ASSERT_NE(processStarted(seen.pid), seen.started);

  EXPECT_EQ(checkProcess(seen), ProcessCheck{ProcessCheck::State::gone});
  EXPECT_EQ(sendSignal(seen, StopSignal::kill), SignalResult::gone);
  Item row;
  row.title = "Reused";
  row.pids = {seen.pid};
  row.stop = Stop::signal();
  for (bool force : {false, true})
    EXPECT_EQ(Stopper::stop(row, {{seen.pid, seen.started}}, {}, force, 1), Stopper::Result::stopped());
  EXPECT_FALSE(processGone(seen.pid));
  EXPECT_EQ(checkProcess({seen.pid, *processStarted(seen.pid)}).state, ProcessCheck::State::running);
}

// While it lives, this process has no descriptor left: every open fails with EMFILE.
class NoDescriptorLeft {
 public:
  NoDescriptorLeft() {
    getrlimit(RLIMIT_NOFILE, &saved_);
    const int lowestFree = dup(STDIN_FILENO);
    close(lowestFree);
    rlimit none = saved_;
    none.rlim_cur = static_cast<rlim_t>(lowestFree);
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoDescriptorLeft() { setrlimit(RLIMIT_NOFILE, &saved_); }
  NoDescriptorLeft(const NoDescriptorLeft&) = delete;
  NoDescriptorLeft& operator=(const NoDescriptorLeft&) = delete;

 private:
  rlimit saved_{};
};

// Only the system saying there is no such process makes one gone. A process that can't be read for
// any other reason is neither signalled nor taken for stopped, before the signal or during the wait.
TEST(ProcessChecksTest, AProcessThatCantBeReadIsNeverGone) {
  Process sleeper("/bin/sleep", {"60"});
  const ScannedProcess seen{sleeper.pid(), processStarted(sleeper.pid()).value_or(Date{})};
  Item row;
  row.title = "Sleeper";
  row.pids = {seen.pid};
  row.stop = Stop::signal();
  const auto failed = Stopper::Result::failed("Sleeper's processes couldn't be read: Too many open files.");
  {
    const NoDescriptorLeft exhausted;
    EXPECT_EQ(checkProcess(seen), (ProcessCheck{ProcessCheck::State::unknown, EMFILE}));
    EXPECT_EQ(sendSignal(seen, StopSignal::terminate), SignalResult::failed);
    EXPECT_EQ(Stopper::waitGone({seen}, 0), (Stopper::Wait{Stopper::Wait::State::unknown, EMFILE}));
    for (bool force : {false, true}) EXPECT_EQ(Stopper::stop(row, {{seen.pid, seen.started}}, {}, force, 1), failed);
  }
  EXPECT_EQ(checkProcess(seen).state, ProcessCheck::State::running);
  EXPECT_EQ(Stopper::stop(row, {{seen.pid, seen.started}}, {}, false, 5), Stopper::Result::stopped());
  EXPECT_EQ(checkProcess(seen).state, ProcessCheck::State::gone);
}

}  // namespace
}  // namespace corvane::platform
