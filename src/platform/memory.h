#pragma once
// Machine-wide memory readings. Neither fails: an unreadable level is 1 (normal), unreadable swap 0.
#include <cstdint>

namespace corvane::platform {

// The kernel's pressure level: 1 normal, 2 warning, 4 critical.
int memoryPressureLevel();
uint64_t swapUsedBytes();

}  // namespace corvane::platform
