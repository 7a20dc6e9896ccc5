// The socket addresses carry their own length in front, as BSD lays them out.
#ifdef __APPLE__

#include "platform/port_probe.h"

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace corvane::platform {

static_assert(sizeof(sockaddr_in) == 16 && sizeof(sockaddr_in6) == 28);

namespace {

// Spawned children inherit only the descriptors they are given, so no close-on-exec flag is needed
// for a socket that lives a few microseconds.
bool bindAndClose(int fd, const sockaddr* address, socklen_t length) {
  const bool bound = ::bind(fd, address, length) == 0;
  ::close(fd);
  return bound;
}

}  // namespace

bool canBind(AddressFamily family, uint16_t port) {
  if (family == AddressFamily::ipv4) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) return false;
    sockaddr_in address;
    std::memset(&address, 0, sizeof address);
    address.sin_len = sizeof address;
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    return bindAndClose(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  const int fd = ::socket(AF_INET6, SOCK_STREAM, 0);
  if (fd < 0) return false;
  sockaddr_in6 address;
  std::memset(&address, 0, sizeof address);
  address.sin6_len = sizeof address;
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(port);
  address.sin6_addr = in6addr_any;
  return bindAndClose(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

}  // namespace corvane::platform

#endif  // __APPLE__
