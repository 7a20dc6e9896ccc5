// The system's <sys/resource.h> with macOS's resource-usage records added.
#pragma once
#include_next <sys/resource.h>
#include <stddef.h>
#include <stdint.h>

typedef void* rusage_info_t;
#define RUSAGE_INFO_V4 4

struct rusage_info_v4 {
  uint8_t ri_uuid[16];
  uint64_t ri_user_time;
  uint64_t ri_system_time;
  uint64_t ri_pkg_idle_wkups;
  uint64_t ri_interrupt_wkups;
  uint64_t ri_pageins;
  uint64_t ri_wired_size;
  uint64_t ri_resident_size;
  uint64_t ri_phys_footprint;
  uint64_t rest[27];  // start and exit times, children, disk, QoS, energy and footprint peaks
};
static_assert(sizeof(struct rusage_info_v4) == 296);
static_assert(offsetof(struct rusage_info_v4, ri_phys_footprint) == 72);
