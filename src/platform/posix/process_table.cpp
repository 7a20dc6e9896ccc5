#include "platform/process_table.h"

#include <unistd.h>

namespace corvane::platform {

uint32_t currentUser() { return static_cast<uint32_t>(getuid()); }

}  // namespace corvane::platform
