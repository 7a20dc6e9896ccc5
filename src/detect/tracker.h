#pragma once
// CPU history of each row from scan to scan, kept by the scanner for its whole life.
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "snapshot/date.h"

namespace corvane {

struct Tracker {
  struct Sample {
    Date at;
    uint64_t cpu = 0;  // the row's cpuTime then, in nanoseconds
    bool operator==(const Sample&) const = default;
  };

  std::map<std::string, std::vector<Sample>> samples;  // per item id, oldest first
  std::map<std::string, Date> lastActive;              // per item id
};

}  // namespace corvane
