#include "ports/ports.h"

#include <gtest/gtest.h>

#include "support/listeners.h"

namespace corvane {
namespace {

using testing_support::Socket;

TEST(PortsTest, ListenersMoveTheSearchOnButNeverPastTheLastPort) {
  for (const int family : {AF_INET, AF_INET6}) {
    Socket taken(family);
    const uint16_t port = taken.listen();
    if (family == AF_INET6 && port == 0) continue;  // no IPv6 loopback
    ASSERT_NE(port, 0);
    const auto found = Ports::firstFree(port);
    ASSERT_TRUE(found);
    EXPECT_GT(*found, port) << family;
  }
  const uint16_t port = Socket().listen();  // closed again at once
  ASSERT_NE(port, 0);
  EXPECT_EQ(Ports::firstFree(port), port);
  Socket last;
  last.listen(65535);  // when this fails, another program holds the port
  EXPECT_EQ(Ports::firstFree(65535), std::nullopt);
}

}  // namespace
}  // namespace corvane
