// Stand-in for macOS <sys/sysctl.h>: the names corvane reads and the swap record.
#pragma once
#include <stddef.h>
#include <stdint.h>

#define CTL_KERN 1
#define KERN_ARGMAX 8
#define KERN_PROCARGS2 49

typedef int boolean_t;

struct xsw_usage {
  uint64_t xsu_total;
  uint64_t xsu_avail;
  uint64_t xsu_used;
  uint32_t xsu_pagesize;
  boolean_t xsu_encrypted;
};
static_assert(sizeof(struct xsw_usage) == 32);

extern "C" {
int sysctl(int* name, unsigned int namelen, void* oldp, size_t* oldlenp, void* newp, size_t newlen);
int sysctlbyname(const char* name, void* oldp, size_t* oldlenp, void* newp, size_t newlen);
}
