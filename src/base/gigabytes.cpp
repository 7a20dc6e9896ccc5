#include "base/gigabytes.h"

#include <cstdio>

namespace corvane {

std::string gigabyteText(uint64_t bytes) {
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%.1f GB", static_cast<double>(bytes) / 1e9);
  return buffer;
}

}  // namespace corvane
