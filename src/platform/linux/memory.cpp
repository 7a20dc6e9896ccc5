#include "platform/memory.h"

#include <cstdlib>
#include <string>

#include "base/lines.h"
#include "platform/files.h"
#include "platform/linux/proc_text.h"

namespace corvane::platform {

namespace linux_proc {

namespace {

std::optional<double> psiAvg10(std::string_view text, std::string_view prefix) {
  for (const std::string_view line : splitLines(text)) {
    if (line.substr(0, prefix.size()) == prefix) {
      auto at = line.find("avg10=");
      if (at == std::string_view::npos) return std::nullopt;
      std::string number(line.substr(at + 6));
      char* stop = nullptr;
      double value = std::strtod(number.c_str(), &stop);
      if (stop == number.c_str()) return std::nullopt;
      return value;
    }
  }
  return std::nullopt;
}

// A /proc file, empty when it can't be read (no pressure file before Linux 4.20).
std::string procFile(const char* path) { return readFile(path).value_or(std::string()); }

}  // namespace

std::optional<int> levelFromPSI(std::string_view text) {
  auto some = psiAvg10(text, "some ");
  auto full = psiAvg10(text, "full ");
  if (!some && !full) return std::nullopt;
  if (full && *full >= 10.0) return 4;
  if (some && *some >= 10.0) return 2;
  return 1;
}

std::optional<uint64_t> meminfoValue(std::string_view text, std::string_view key) {
  for (const std::string_view line : splitLines(text)) {
    if (line.size() > key.size() && line.substr(0, key.size()) == key && line[key.size()] == ':') {
      std::string rest(line.substr(key.size() + 1));
      char* stop = nullptr;
      unsigned long long value = std::strtoull(rest.c_str(), &stop, 10);
      if (stop == rest.c_str()) return std::nullopt;
      return value;
    }
  }
  return std::nullopt;
}

std::optional<int> levelFromMeminfo(std::string_view text) {
  auto available = meminfoValue(text, "MemAvailable");
  auto total = meminfoValue(text, "MemTotal");
  if (!available || !total || *total == 0) return std::nullopt;
  double ratio = static_cast<double>(*available) / static_cast<double>(*total);
  if (ratio < 0.05) return 4;
  if (ratio < 0.15) return 2;
  return 1;
}

uint64_t swapUsedFromMeminfo(std::string_view text) {
  auto total = meminfoValue(text, "SwapTotal");
  auto free = meminfoValue(text, "SwapFree");
  if (!total || !free || *free > *total) return 0;
  return (*total - *free) * 1024;
}

}  // namespace linux_proc

int memoryPressureLevel() {
  if (auto level = linux_proc::levelFromPSI(linux_proc::procFile("/proc/pressure/memory"))) return *level;
  if (auto level = linux_proc::levelFromMeminfo(linux_proc::procFile("/proc/meminfo"))) return *level;
  return 1;
}

uint64_t swapUsedBytes() { return linux_proc::swapUsedFromMeminfo(linux_proc::procFile("/proc/meminfo")); }

}  // namespace corvane::platform
