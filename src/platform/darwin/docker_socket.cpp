#ifdef __APPLE__

#include "platform/docker_socket.h"

namespace corvane::platform {

// Docker Desktop, OrbStack and colima run their engines as the user's own processes, which the
// snapshot sees; a socket on its own says nothing more.
bool dockerSocketExists() { return false; }

}  // namespace corvane::platform

#endif  // __APPLE__
