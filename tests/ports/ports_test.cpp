#include "ports/ports.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace corvane {
namespace {

// A listening socket the test owns, on the wildcard address of one family; port 0 picks a free one.
class Listener {
 public:
  Listener(int family, uint16_t port, bool v6only = false) {
    fd_ = socket(family, SOCK_STREAM, 0);
    if (fd_ < 0) return;
    sockaddr_storage storage{};
    socklen_t length;
    if (family == AF_INET) {
      auto* a = reinterpret_cast<sockaddr_in*>(&storage);
      a->sin_family = AF_INET;
      a->sin_port = htons(port);
      a->sin_addr.s_addr = htonl(INADDR_ANY);
      length = sizeof *a;
    } else {
      int on = v6only ? 1 : 0;
      setsockopt(fd_, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
      auto* a = reinterpret_cast<sockaddr_in6*>(&storage);
      a->sin6_family = AF_INET6;
      a->sin6_port = htons(port);
      a->sin6_addr = in6addr_any;
      length = sizeof *a;
    }
    if (bind(fd_, reinterpret_cast<sockaddr*>(&storage), length) != 0 || listen(fd_, 1) != 0) return;
    getsockname(fd_, reinterpret_cast<sockaddr*>(&storage), &length);
    port_ = ntohs(family == AF_INET ? reinterpret_cast<sockaddr_in*>(&storage)->sin_port
                                    : reinterpret_cast<sockaddr_in6*>(&storage)->sin6_port);
  }
  ~Listener() {
    if (fd_ >= 0) close(fd_);
  }
  uint16_t port() const { return port_; }

 private:
  int fd_ = -1;
  uint16_t port_ = 0;
};

TEST(PortsTest, ListenerOnEitherFamilyMovesTheSearchOn) {
  const Listener ipv4(AF_INET, 0);
  ASSERT_NE(ipv4.port(), 0);
  auto found = Ports::firstFree(ipv4.port());
  ASSERT_TRUE(found);
  EXPECT_GT(*found, ipv4.port());

  // IPv6 only, so that the IPv4 bind alone would succeed.
  const Listener ipv6(AF_INET6, 0, true);
  ASSERT_NE(ipv6.port(), 0);
  found = Ports::firstFree(ipv6.port());
  ASSERT_TRUE(found);
  EXPECT_GT(*found, ipv6.port());
}

TEST(PortsTest, FreePortIsItsOwnAnswer) {
  uint16_t port;
  {
    const Listener probe(AF_INET6, 0);
    port = probe.port();
  }
  ASSERT_NE(port, 0);
  EXPECT_EQ(Ports::firstFree(port), port);
}

TEST(PortsTest, LastPortTakenYieldsNothing) {
  const Listener last(AF_INET, 65535);  // if this bind fails, someone else holds the port
  EXPECT_EQ(Ports::firstFree(65535), std::nullopt);
}

}  // namespace
}  // namespace corvane
