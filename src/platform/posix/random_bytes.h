#pragma once
// The random source behind new UUIDs, which each system draws from its own way; defined in linux/
// and darwin/ for the shared code of posix/.
#include <array>
#include <cstdint>

namespace corvane::platform::os {

// Sixteen bytes from the kernel's random generator.
std::array<uint8_t, 16> randomBytes();

}  // namespace corvane::platform::os
