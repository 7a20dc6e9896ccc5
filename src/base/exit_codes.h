#pragma once
// The exit codes every command shares.
#include <cstdint>

namespace corvane::ExitCode {

inline constexpr int32_t done = 0;
inline constexpr int32_t failed = 1;          // something failed or is still running
inline constexpr int32_t nothingToDo = 2;     // nothing matched or nothing to stop
inline constexpr int32_t needsYes = 3;        // a pinned row or a database picked by id or port
inline constexpr int32_t usage = 64;

}  // namespace corvane::ExitCode
