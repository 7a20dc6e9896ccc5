#include "platform/memory.h"

#include <sys/sysctl.h>

namespace corvane::platform {

static_assert(sizeof(xsw_usage) == 32);

// The kernel's own rating. Left at 1 when it can't be read, which is what the kernel reports for a
// machine under no pressure.
int memoryPressureLevel() {
  int32_t level = 1;
  size_t length = sizeof level;
  sysctlbyname("kern.memorystatus_vm_pressure_level", &level, &length, nullptr, 0);
  return level;
}

uint64_t swapUsedBytes() {
  xsw_usage usage{};
  size_t length = sizeof usage;
  if (sysctlbyname("vm.swapusage", &usage, &length, nullptr, 0) != 0) return 0;
  return usage.xsu_used;
}

}  // namespace corvane::platform
