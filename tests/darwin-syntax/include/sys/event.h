// Stand-in for macOS <sys/event.h>: kqueue with the process filter.
#pragma once
#include <stdint.h>
#include <time.h>

#define EVFILT_PROC (-5)
#define EV_ADD 0x0001
#define EV_ONESHOT 0x0010
#define EV_ERROR 0x4000
#define NOTE_EXIT 0x80000000U

struct kevent {
  uintptr_t ident;
  int16_t filter;
  uint16_t flags;
  uint32_t fflags;
  intptr_t data;
  void* udata;
};

#define EV_SET(kevp, a, b, c, d, e, f) \
  do {                                 \
    struct kevent* __kevp__ = (kevp);  \
    __kevp__->ident = (a);             \
    __kevp__->filter = (b);            \
    __kevp__->flags = (c);             \
    __kevp__->fflags = (d);            \
    __kevp__->data = (e);              \
    __kevp__->udata = (f);             \
  } while (0)

extern "C" {
int kqueue(void);
int kevent(int kq, const struct kevent* changelist, int nchanges, struct kevent* eventlist, int nevents,
           const struct timespec* timeout);
}
