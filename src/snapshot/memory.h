#pragma once
// How hard the machine is pressed for memory, and how much swap is in use.
#include <cstdint>
#include <string>

namespace corvane {

enum class Pressure : int { normal = 1, warning = 2, critical = 4 };

std::string pressureName(Pressure pressure);
// A kernel level of 4 is critical, 2 warning, anything else normal.
Pressure pressureFromLevel(int level);

namespace Memory {
Pressure pressure();
uint64_t swapUsed();
}  // namespace Memory

}  // namespace corvane
