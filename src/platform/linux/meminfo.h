#pragma once
// Parsers of the kernel's memory files, kept apart from the file reads so they can be tested on text.
#include <cstdint>
#include <optional>
#include <string_view>

namespace corvane::platform::linux_proc {

// /proc/pressure/memory: 4 when "full avg10" >= 10, else 2 when "some avg10" >= 10, else 1.
// Absent when the text has neither line.
std::optional<int> levelFromPSI(std::string_view text);
// /proc/meminfo: MemAvailable/MemTotal below 0.05 gives 4, below 0.15 gives 2, else 1.
std::optional<int> levelFromMeminfo(std::string_view text);
// SwapTotal - SwapFree in bytes, 0 when either is missing.
uint64_t swapUsedFromMeminfo(std::string_view text);
// The value of one "Key:   123 kB" line, in the file's unit; absent when the key is missing.
std::optional<uint64_t> meminfoValue(std::string_view text, std::string_view key);

}  // namespace corvane::platform::linux_proc
