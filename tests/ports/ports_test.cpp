#include "ports/ports.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace corvane {
namespace {

// A listener the test owns on the IPv4 or IPv6-only wildcard address; port 0 lets the kernel pick one.
struct Listener {
  int fd = -1;
  uint16_t port = 0;
  Listener(bool ipv6, uint16_t wanted) {
    sockaddr_in6 a6{.sin6_family = AF_INET6, .sin6_port = htons(wanted), .sin6_addr = in6addr_any};
    sockaddr_in a4{.sin_family = AF_INET, .sin_port = htons(wanted), .sin_addr = {htonl(INADDR_ANY)}};
    auto* address = ipv6 ? reinterpret_cast<sockaddr*>(&a6) : reinterpret_cast<sockaddr*>(&a4);
    socklen_t length = ipv6 ? sizeof a6 : sizeof a4;
    fd = socket(ipv6 ? AF_INET6 : AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    if (ipv6) setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    if (bind(fd, address, length) != 0 || listen(fd, 1) != 0 || getsockname(fd, address, &length) != 0) return;
    port = ntohs(ipv6 ? a6.sin6_port : a4.sin_port);
  }
  ~Listener() { close(fd); }
};

TEST(PortsTest, ListenerOnEitherFamilyMovesTheSearchOn) {
  for (bool ipv6 : {false, true}) {
    const Listener taken(ipv6, 0);
    ASSERT_NE(taken.port, 0);
    const auto found = Ports::firstFree(taken.port);
    ASSERT_TRUE(found);
    EXPECT_GT(*found, taken.port) << (ipv6 ? "[::]" : "0.0.0.0");
  }
}

TEST(PortsTest, FreePortIsItsOwnAnswer) {
  const uint16_t port = Listener(false, 0).port;  // closed again at once
  ASSERT_NE(port, 0);
  EXPECT_EQ(Ports::firstFree(port), port);
}

TEST(PortsTest, NeverWrapsPastTheLastPort) {
  const Listener last(false, 65535);  // when this bind fails, another program holds the port
  EXPECT_EQ(Ports::firstFree(65535), std::nullopt);
}

}  // namespace
}  // namespace corvane
