// Stand-in for macOS <mach/kern_return.h>.
#pragma once
typedef int kern_return_t;
#define KERN_SUCCESS 0
