#include "platform/port_probe.h"

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace corvane::platform {

namespace {

#ifdef __APPLE__
// Spawned children inherit only the descriptors they are given, so no close-on-exec flag is needed
// for a socket that lives a few microseconds; the addresses carry their own length in front, as BSD
// lays them out.
static_assert(sizeof(sockaddr_in) == 16 && sizeof(sockaddr_in6) == 28);
int openTcpSocket(int domain) { return ::socket(domain, SOCK_STREAM, 0); }
void setAddressLength(sockaddr_in& address) { address.sin_len = sizeof address; }
void setAddressLength(sockaddr_in6& address) { address.sin6_len = sizeof address; }
#else
int openTcpSocket(int domain) { return ::socket(domain, SOCK_STREAM | SOCK_CLOEXEC, 0); }
void setAddressLength(sockaddr_in&) {}
void setAddressLength(sockaddr_in6&) {}
#endif

// Binds a new TCP socket of `domain` to `address` and closes it again.
template <typename Address>
bool bindsOnce(int domain, Address& address) {
  const int fd = openTcpSocket(domain);
  if (fd < 0) return false;
  setAddressLength(address);
  const bool bound = ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(fd);
  return bound;
}

}  // namespace

bool canBind(AddressFamily family, uint16_t port) {
  if (family == AddressFamily::ipv4) {
    sockaddr_in address;
    std::memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    return bindsOnce(AF_INET, address);
  }
  sockaddr_in6 address;
  std::memset(&address, 0, sizeof address);
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(port);
  address.sin6_addr = in6addr_any;
  return bindsOnce(AF_INET6, address);
}

}  // namespace corvane::platform
