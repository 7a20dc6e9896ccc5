#pragma once
// The argument area that sysctl KERN_PROCARGS2 returns for a process: argc (Int32, host order), the
// executable path ended by a zero byte, zero padding, then the arguments, each ended by a zero byte,
// and after them the environment. Kept apart from the sysctl call, and free of system headers, so
// that it is tested on every system.
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::platform::darwin_proc {

// Up to argc strings after the path and its padding, as raw bytes; a last string without its zero
// byte runs to the end of the data. Empty when the data is shorter than 5 bytes, argc is not
// positive, or nothing follows the path. The environment is never read.
inline std::vector<std::string> parseProcArgs(std::string_view area) {
  std::vector<std::string> args;
  if (area.size() < 5) return args;
  int32_t argc = 0;
  std::memcpy(&argc, area.data(), sizeof argc);
  if (argc <= 0) return args;
  size_t at = sizeof argc;
  while (at < area.size() && area[at] != '\0') ++at;  // the executable path
  while (at < area.size() && area[at] == '\0') ++at;  // its padding
  while (at < area.size() && args.size() < static_cast<size_t>(argc)) {
    size_t end = area.find('\0', at);
    if (end == std::string_view::npos) end = area.size();
    args.emplace_back(area.substr(at, end - at));
    at = end + 1;
  }
  return args;
}

}  // namespace corvane::platform::darwin_proc
