// The system's <spawn.h> with macOS's flag for inheriting only the descriptors of the file actions.
#pragma once
#include_next <spawn.h>
#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000
