#include "snapshot/memory.h"

#include "platform/memory.h"

namespace corvane {

std::string pressureName(Pressure pressure) {
  switch (pressure) {
    case Pressure::warning: return "warning";
    case Pressure::critical: return "critical";
    case Pressure::normal: break;
  }
  return "normal";
}

Pressure pressureFromLevel(int level) {
  if (level == 4) return Pressure::critical;
  if (level == 2) return Pressure::warning;
  return Pressure::normal;
}

namespace Memory {

Pressure pressure() { return pressureFromLevel(platform::memoryPressureLevel()); }

uint64_t swapUsed() { return platform::swapUsedBytes(); }

}  // namespace Memory

}  // namespace corvane
