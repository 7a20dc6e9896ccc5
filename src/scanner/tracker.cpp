#include "scanner/tracker.h"

#include <iterator>

namespace corvane {

std::vector<Item> Tracker::update(std::vector<Item> items, Date now) {
  Samples newSamples;
  for (Item& item : items) item = track(std::move(item), now, newSamples);
  samples = std::move(newSamples);
  std::erase_if(lastActive, [&](const auto& entry) { return samples.count(entry.first) == 0; });
  return items;
}

Item Tracker::track(Item item, Date now, Samples& newSamples) {
  // Containers and engines without processes have no CPU time of their own to follow.
  if (item.pids.empty()) return item;

  std::vector<Sample> history;
  if (const auto known = samples.find(item.id); known != samples.end()) history = known->second;
  while (history.size() >= 2 && now - history[1].at > window) history.erase(history.begin());

  if (!history.empty() && now > history.front().at) {
    const Sample& base = history.front();
    const uint64_t spent = item.cpuTimeNanoseconds;
    const uint64_t delta = spent > base.cpuTimeNanoseconds ? spent - base.cpuTimeNanoseconds : 0;
    item.cpuCores = (static_cast<double>(delta) / nanosecondsPerSecond) / secondsBetween(base.at, now);
  }

  // A Gradle daemon with a connected client is running a build even while it waits on the compiler.
  item.building = item.cpuCores > busyCores || (item.kind == Item::Kind::gradle && item.inbound > 0);

  const bool active = history.empty() || item.cpuCores > activeCores || item.inbound > 0;
  if (active) lastActive[item.id] = now;
  const auto seen = lastActive.find(item.id);
  const Date last = seen == lastActive.end() ? now : seen->second;
  item.idleSince.reset();
  if (now - last >= idleTime) item.idleSince = last;

  history.push_back({now, item.cpuTimeNanoseconds});
  newSamples[item.id] = std::move(history);
  return item;
}

}  // namespace corvane
