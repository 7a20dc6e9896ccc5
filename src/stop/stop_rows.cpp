#include "stop/stop_rows.h"

#include <mutex>
#include <system_error>
#include <thread>

#include "activity/activity_log.h"
#include "platform/interrupts.h"
#include "stop/stopper.h"

namespace corvane {

namespace {

// Every caller in this program gives a polite stop this long.
constexpr double stopWaitSeconds = 5;

struct Finished {
  size_t row = 0;
  Stopper::Result result;
};

Outcome outcomeOf(const Item& row, const Stopper::Result& result) {
  const bool failed = result.state == Outcome::State::failed;
  return makeOutcome(row, result.state, failed ? std::optional(result.message) : std::nullopt);
}

}  // namespace

std::vector<Outcome> stopRows(const std::vector<Item>& rows, const StartTimes& started, StopMode mode,
                              const std::string& reason, const Tools& tools) {
  // Interrupted, the stops end their waits early and what did stop is still recorded below.
  const platform::InterruptHold hold;
  std::mutex mutex;
  std::vector<Finished> finished;
  finished.reserve(rows.size());
  {
    std::vector<std::thread> stops;
    stops.reserve(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
      auto stopRow = [&, i] {
        Stopper::Result result = Stopper::stop(rows[i], started, tools, mode == StopMode::force, stopWaitSeconds);
        const std::lock_guard lock(mutex);
        finished.push_back({i, std::move(result)});
      };
      try {
        stops.emplace_back(stopRow);
      } catch (const std::system_error&) {
        stopRow();  // out of threads: this row is stopped here instead of beside the others
      }
    }
    for (auto& stop : stops) stop.join();
  }  // every stop has finished here

  std::vector<Outcome> outcomes;
  std::vector<Activity> stopped;
  outcomes.reserve(finished.size());
  for (const Finished& f : finished) {
    const Item& row = rows[f.row];
    outcomes.push_back(outcomeOf(row, f.result));
    if (f.result.state == Outcome::State::stopped) stopped.push_back(makeActivity(row, now(), reason));
  }
  if (!stopped.empty()) ActivityLog::standard().append(stopped);
  return outcomes;
}

}  // namespace corvane
