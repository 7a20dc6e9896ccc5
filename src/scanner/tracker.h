#pragma once
// CPU history of each row from scan to scan, kept by the scanner for its whole life.
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "detect/item.h"
#include "base/date.h"

namespace corvane {

struct Tracker {
  struct Sample {
    Date at;
    uint64_t cpuTimeNanoseconds = 0;  // the row's then
    bool operator==(const Sample&) const = default;
  };
  using Samples = std::map<std::string, std::vector<Sample>>;

  // CPU use is measured over about this much time: the newest sample at least this old is the base.
  static constexpr std::chrono::seconds window{10};
  static constexpr double busyCores = 0.2;     // above it a row is building
  static constexpr double activeCores = 0.01;  // above it a row is active
  static constexpr std::chrono::seconds idleTime{600};
  static constexpr double nanosecondsPerSecond = 1'000'000'000;

  Samples samples;                         // per item id, oldest first
  std::map<std::string, Date> lastActive;  // per item id

  // Fills in `cpuCores`, `building` and `idleSince` of a scan's items, in the same order, and forgets the
  // rows that are gone.
  std::vector<Item> update(std::vector<Item> items, Date now);
  // One item of `update`; its history goes into `newSamples`.
  Item track(Item item, Date now, Samples& newSamples);
};

}  // namespace corvane
