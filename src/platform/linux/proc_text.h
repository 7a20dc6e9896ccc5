#pragma once
// Parsers of the files of /proc, kept apart from the reads so they can be tested on text.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::platform::linux_proc {

// The fields of /proc/PID/stat that corvane uses, in the kernel's units (clock ticks).
struct StatFields {
  char state = '?';
  int32_t ppid = 0;
  uint64_t utime = 0;
  uint64_t stime = 0;
  uint64_t starttime = 0;  // ticks after boot
};
// The command name in parentheses may hold spaces and ")" itself, so the fields are counted from
// the last ")". Absent when the text is cut short.
std::optional<StatFields> parseStat(std::string_view text);

// The fields of /proc/PID/status that corvane uses. Kernel threads have no memory lines (0 then).
struct StatusFields {
  std::string name;                 // "Name:", the command name (at most 15 bytes)
  std::optional<uint32_t> realUid;  // first number of "Uid:"
  uint64_t rssAnonKB = 0;
  uint64_t vmSwapKB = 0;
};
StatusFields parseStatus(std::string_view text);

// /proc/PID/cmdline: the strings between NUL bytes; a last string without its NUL still counts.
// Empty strings at the end are dropped: a process that rewrote its title leaves the rest of its
// argument area padded with NUL bytes.
std::vector<std::string> splitAtNul(std::string_view bytes);

// The target of /proc/PID/exe or /proc/PID/cwd without the " (deleted)" the kernel adds once the
// file or folder is removed.
std::string_view withoutDeletedMark(std::string_view link);

// The inode of an fd link "socket:[12345]"; absent for any other link.
std::optional<uint64_t> socketInode(std::string_view link);

// The "btime" line of /proc/stat: the boot time in seconds since 1970.
std::optional<int64_t> bootTime(std::string_view procStat);

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
