#pragma once
// Memory sizes as `docker stats` prints them: "1.5GiB", "512MiB", "12.3kB", "0B".
#include <cstdint>
#include <string_view>

namespace corvane {

// Bytes, truncated toward zero. Anything without a known unit right after the number, and any
// negative or non-finite number, is 0; a size beyond 64 bits is the largest one.
uint64_t parseMemorySize(std::string_view text);

}  // namespace corvane
