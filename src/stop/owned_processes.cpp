// Which processes the stopper may touch, and how it waits for them to go.
#include <chrono>
#include <thread>

#include "platform/interrupts.h"
#include "platform/paths.h"
#include "platform/process_table.h"
#include "platform/signals.h"
#include "stop/stopper.h"

namespace corvane::Stopper {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(200);

}  // namespace

Owned ownedProcesses(const Item& item, const StartTimes& started) {
  Owned owned;
  size_t gone = 0;
  for (int32_t pid : item.pids) {
    const auto recorded = started.find(pid);
    if (recorded == started.end()) continue;
    const platform::ScannedProcess process{pid, recorded->second};
    const platform::ProcessCheck check = platform::checkProcess(process);
    if (check.state == platform::ProcessCheck::State::gone)
      ++gone;
    else if (check.state == platform::ProcessCheck::State::unknown)
      owned.unreadable = check.error;
    else if (mayStop(pid))
      owned.processes.push_back(process);
  }
  owned.allGone = !item.pids.empty() && gone == item.pids.size();
  return owned;
}

bool mayStop(int32_t pid) {
  if (pid < 2 || pid == platform::ownPid() || pid == platform::parentPid()) return false;
  const auto owner = platform::processOwner(pid);
  if (!owner || owner->realUid != platform::currentUser()) return false;
  if (!owner->path || owner->path->empty()) return false;
  return !platform::isSystemProgram(*owner->path);
}

Wait waitGone(const std::vector<platform::ScannedProcess>& processes, double seconds) {
  const auto deadline = std::chrono::steady_clock::now() +
                        std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                            std::chrono::duration<double>(seconds));
  std::vector<platform::ScannedProcess> left = processes;
  while (true) {
    // A process found gone is not asked about again: by the next check its pid may name a new one. One
    // that can't be read is asked again; the last answer stands at the deadline.
    int unreadable = 0;
    std::erase_if(left, [&unreadable](const platform::ScannedProcess& process) {
      const platform::ProcessCheck check = platform::checkProcess(process);
      if (check.state == platform::ProcessCheck::State::unknown) unreadable = check.error;
      return check.state == platform::ProcessCheck::State::gone;
    });
    if (left.empty()) return {};
    if (std::chrono::steady_clock::now() > deadline || platform::interrupted())
      return unreadable != 0 ? Wait{Wait::State::unknown, unreadable} : Wait{Wait::State::running};
    std::this_thread::sleep_for(pollInterval);
  }
}

}  // namespace corvane::Stopper
