#include "platform/port_probe.h"

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/posix/tcp_socket.h"

namespace corvane::platform {

namespace {

bool bindAndClose(int fd, const sockaddr* address, socklen_t length) {
  const bool bound = ::bind(fd, address, length) == 0;
  ::close(fd);
  return bound;
}

}  // namespace

bool canBind(AddressFamily family, uint16_t port) {
  if (family == AddressFamily::ipv4) {
    const int fd = os::openTcpSocket(AF_INET);
    if (fd < 0) return false;
    sockaddr_in address;
    std::memset(&address, 0, sizeof address);
    os::setAddressLength(address);
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    return bindAndClose(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  const int fd = os::openTcpSocket(AF_INET6);
  if (fd < 0) return false;
  sockaddr_in6 address;
  std::memset(&address, 0, sizeof address);
  os::setAddressLength(address);
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(port);
  address.sin6_addr = in6addr_any;
  return bindAndClose(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

}  // namespace corvane::platform
