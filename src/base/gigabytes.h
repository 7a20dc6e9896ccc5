#pragma once
// Memory as the user reads it everywhere: decimal gigabytes with one decimal.
#include <cstdint>
#include <string>

namespace corvane {

// "1.5 GB".
std::string gigabyteText(uint64_t bytes);

}  // namespace corvane
