// Stand-in for macOS <mach/mach_time.h>: the timebase of Mach absolute time.
#pragma once
#include <mach/kern_return.h>
#include <stdint.h>

struct mach_timebase_info {
  uint32_t numer;
  uint32_t denom;
};
typedef struct mach_timebase_info* mach_timebase_info_t;
typedef struct mach_timebase_info mach_timebase_info_data_t;

extern "C" kern_return_t mach_timebase_info(mach_timebase_info_t info);
