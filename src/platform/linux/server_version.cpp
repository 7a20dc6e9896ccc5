#include "platform/server_version.h"

namespace corvane::platform {

std::string serverVersion() {
#ifdef CORVANE_VERSION
  return CORVANE_VERSION[0] ? CORVANE_VERSION : "dev";
#else
  return "dev";
#endif
}

}  // namespace corvane::platform
