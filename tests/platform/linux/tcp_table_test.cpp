#include "platform/linux/tcp_table.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/listeners.h"

namespace corvane::platform::linux_proc {
namespace {

TEST(TcpTableTest, ProcNetTcpRowsOfTheUserInListenAndEstablishedNetlinkAgrees) {
  const char* v4 =
      "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
      "   0: 0100007F:0BB8 00000000:0000 0A 00000000:00000000 00:00000000 00000000   501        0 48213 1 0 100 0 0\n"
      "   1: 0100007F:0BB8 0100007F:D2F0 01 00000000:00000000 00:00000000 00000000   501        0 48214 1 0 20 4 30\n"
      "   2: 0100007F:D2F0 0100007F:0BB8 01 00000000:00000000 00:00000000 00000000   501        0 0 1 0 20 4 30 10\n"
      "   3: 0100007F:1538 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 777 1 0 100 0 0\n"
      "   4: 0100007F:0BB8 0100007F:D2F1 06 00000000:00000000 03:00000FA0 00000000     0        0 0 3 0\n";
  const char* v6 =
      "  sl  local_address                         remote_address                        st tx_queue rx_queue tr "
      "tm->when retrnsmt   uid  timeout inode\n"
      "   0: 00000000000000000000000000000000:1F90 00000000000000000000000000000000:0000 0A 00000000:00000000 "
      "00:00000000 00000000   501        0 50001 1 0 100 0 0 10 0\n";
  TcpTable table;
  addProcNetTcpRows(v4, 501, table);
  addProcNetTcpRows(v6, 501, table);
  ASSERT_EQ(table.size(), 3u);
  EXPECT_EQ(table.at(48213).port, 3000);
  EXPECT_TRUE(table.at(48213).listening);
  EXPECT_EQ(table.at(48214).port, 3000);
  EXPECT_FALSE(table.at(48214).listening);
  EXPECT_EQ(table.at(50001).port, 8080);

  // A connection from a port that nobody listens on is never inbound.
  table[60000] = TcpSocket{53000, false};
  dropUncountableConnections(table);
  EXPECT_EQ(table.size(), 3u);
  EXPECT_FALSE(table.contains(60000));

  // Both ways of reading see a socket of this process with the same port and state.
  testing_support::Socket listener(AF_INET6);
  const uint16_t port = listener.listen();
  if (port == 0) GTEST_SKIP() << "no IPv6 loopback";
  struct stat info;
  ASSERT_EQ(fstat(listener.fd, &info), 0);
  const uint64_t inode = info.st_ino;

  const auto fromNetlink = readTcpTableFromNetlink(getuid());
  const auto fromFiles = readTcpTableFromProcFiles(getuid());
  ASSERT_TRUE(fromNetlink);
  for (const TcpTable* read : {&*fromNetlink, &fromFiles}) {
    ASSERT_TRUE(read->contains(inode));
    EXPECT_EQ(read->at(inode).port, port);
    EXPECT_TRUE(read->at(inode).listening);
  }
}

}  // namespace
}  // namespace corvane::platform::linux_proc
