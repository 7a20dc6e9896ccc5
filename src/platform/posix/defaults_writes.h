#pragma once
// Writes of the defaults suite from this process go one at a time, and none once the program is ending.
#include <mutex>

namespace corvane::platform::os {

// Held for the whole of one write; it owns no lock once closeDefaults() has run, and the write is
// then skipped.
std::unique_lock<std::mutex> defaultsWriteLock();

}  // namespace corvane::platform::os
