#pragma once
// Everything a classification run starts from.
#include <map>
#include <string>
#include <vector>

#include "detect/item.h"
#include "snapshot/proc.h"

namespace corvane {

struct World {
  Snapshot snapshot{};
  std::map<std::string, std::string> simulators{};  // device name by upper-case UDID
  std::vector<Container> containers{};              // in the order the scanner read them
};

}  // namespace corvane
