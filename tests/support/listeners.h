#pragma once
// Sockets of the test, and ports for servers that a test starts itself.
#include <chrono>
#include <cstdint>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane::testing_support {

// A TCP socket of the test, closed with the object; it closes on exec, so the programs a test starts
// never listen on it too.
struct Socket {
  explicit Socket(int family = AF_INET) : family(family), fd(socket(family, SOCK_STREAM, 0)) {
    if (fd >= 0) fcntl(fd, F_SETFD, FD_CLOEXEC);
  }
  // The next connection to this listening socket.
  Socket accepted() const {
    Socket s(-1);
    s.fd = ::accept(fd, nullptr, nullptr);
    if (s.fd >= 0) fcntl(s.fd, F_SETFD, FD_CLOEXEC);
    return s;
  }
  Socket(Socket&& other) noexcept : family(other.family), fd(other.fd) { other.fd = -1; }
  ~Socket() {
    if (fd >= 0) close(fd);
  }

  // Listens on `port` (0: any) of the loopback address, or of every address (for IPv6 both stacks);
  // the port, 0 on failure.
  uint16_t listen(uint16_t port = 0, bool everyAddress = false) {
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_port = htons(port);
    v4.sin_addr.s_addr = htonl(everyAddress ? INADDR_ANY : INADDR_LOOPBACK);
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = htons(port);
    v6.sin6_addr = everyAddress ? in6addr_any : in6addr_loopback;
    int only = everyAddress ? 0 : 1;
    if (family == AF_INET6) setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &only, sizeof only);
    auto* address = family == AF_INET6 ? reinterpret_cast<sockaddr*>(&v6) : reinterpret_cast<sockaddr*>(&v4);
    socklen_t length = family == AF_INET6 ? sizeof v6 : sizeof v4;
    if (fd < 0 || ::bind(fd, address, length) != 0 || ::listen(fd, 16) != 0) return 0;
    getsockname(fd, address, &length);
    return ntohs(family == AF_INET6 ? v6.sin6_port : v4.sin_port);
  }

  // Binds a Unix socket (of the family AF_UNIX) to `path`, as a Docker engine does.
  bool bind(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }

  bool connect(uint16_t port) const {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }

  int family;
  int fd;
};

// A loopback port the kernel has just handed out and taken back, so no other listener holds it.
inline uint16_t freePort() { return Socket().listen(); }

// Waits up to 10 s for something to accept connections on the loopback port.
inline bool listening(uint16_t port) {
  for (int attempt = 0; attempt < 200; ++attempt) {
    if (Socket().connect(port)) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

}  // namespace corvane::testing_support
