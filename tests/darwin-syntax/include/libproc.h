// Stand-in for macOS <libproc.h>: the calls corvane makes, with their real prototypes.
#pragma once
#include <stdint.h>
#include <sys/proc_info.h>
#include <sys/resource.h>

#define PROC_PIDPATHINFO_MAXSIZE (4 * MAXPATHLEN)

extern "C" {
int proc_listallpids(void* buffer, int buffersize);
int proc_pidinfo(int pid, int flavor, uint64_t arg, void* buffer, int buffersize);
int proc_pidfdinfo(int pid, int fd, int flavor, void* buffer, int buffersize);
int proc_pidpath(int pid, void* buffer, uint32_t buffersize);
int proc_pid_rusage(int pid, int flavor, rusage_info_t* buffer);
}
