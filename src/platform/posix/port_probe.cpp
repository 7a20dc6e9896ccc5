#include "platform/port_probe.h"

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/posix/tcp_socket.h"

namespace corvane::platform {

namespace {

// Binds a new TCP socket of `domain` to `address` and closes it again.
template <typename Address>
bool bindsOnce(int domain, Address& address) {
  const int fd = os::openTcpSocket(domain);
  if (fd < 0) return false;
  os::setAddressLength(address);
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
