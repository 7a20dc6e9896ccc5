// Readings of the kernel's /proc texts.
#include "platform/linux/proc_text.h"

#include <gmock/gmock.h>

namespace corvane::platform::linux_proc {
namespace {

using ::testing::ElementsAre;

TEST(ProcTextTest, StatFieldsFromTheLastParenthesisStatusLinesByNameSmallReadingsAndPressure) {
  const char* line =
      "4121 (my (odd) name) x) S 4100 4121 4100 34816 4121 4194304 2051 0 0 0 1250 375 0 0 20 0 7 0 "
      "987654 1234567 890 18446744073709551615 1 1 0 0 0 0 0 4096 0 0 0 0 17 1 0 0 0 0 0\n";
  const auto stat = parseStat(line);
  ASSERT_TRUE(stat);
  EXPECT_EQ(stat->state, 'S');
  EXPECT_EQ(stat->ppid, 4100);
  EXPECT_EQ(stat->utime, 1250u);
  EXPECT_EQ(stat->stime, 375u);
  EXPECT_EQ(stat->starttime, 987654u);
  EXPECT_EQ(parseStat("77 (zombie) Z 1 77 77 0 -1 4228172 0 0 0 0 0 0 0 0 20 0 1 0 555 0 0")->state, 'Z');
  EXPECT_FALSE(parseStat("4121 (cut) S 4100 4121"));
  EXPECT_FALSE(parseStat("no parenthesis at all"));

  // Status gives the real user and the private memory.
  const char* text =
      "Name:\tnode\nUmask:\t0022\nState:\tS (sleeping)\nPid:\t4121\nUid:\t501\t0\t0\t0\nGid:\t20\t20\t20\t20\n"
      "VmRSS:\t  204800 kB\nRssAnon:\t  150000 kB\nRssFile:\t   54800 kB\nVmSwap:\t    2048 kB\n";
  const auto status = parseStatus(text);
  EXPECT_EQ(status.name, "node");
  EXPECT_EQ(status.realUid, 501u);
  EXPECT_EQ(status.rssAnonKB, 150000u);
  EXPECT_EQ(status.vmSwapKB, 2048u);
  // A kernel thread has no memory lines.
  const auto thread = parseStatus("Name:\tkworker/0:1\nUid:\t0\t0\t0\t0\nThreads:\t1\n");
  EXPECT_EQ(thread.realUid, 0u);
  EXPECT_EQ(thread.rssAnonKB, 0u);
  EXPECT_FALSE(parseStatus("Name:\tx\n").realUid);

  EXPECT_THAT(splitAtNul(std::string_view("node\0server.js\0\0--port\0", 23)),
              ElementsAre("node", "server.js", "", "--port"));
  EXPECT_THAT(splitAtNul("title set by the process"), ElementsAre("title set by the process"));
  EXPECT_TRUE(splitAtNul("").empty());
  // A rewritten title leaves the rest of the argument area as NUL bytes.
  EXPECT_THAT(splitAtNul(std::string_view("nginx: worker\0\0\0\0\0", 18)), ElementsAre("nginx: worker"));
  // A process's own folder and executable may have been removed since it started.
  for (auto [link, target] : std::initializer_list<std::pair<const char*, const char*>>{
           {"/usr/bin/node (deleted)", "/usr/bin/node"}, {"/usr/bin/node", "/usr/bin/node"},
           {"/home/ann/gone (deleted) (deleted)", "/home/ann/gone (deleted)"}, {" (deleted)", " (deleted)"}})
    EXPECT_EQ(withoutDeletedMark(link), target) << link;
  EXPECT_EQ(socketInode("socket:[48213]"), 48213u);
  for (const char* link : {"pipe:[48213]", "socket:[]", "socket:[12x]", "/dev/null", "socket:[1"})
    EXPECT_FALSE(socketInode(link)) << link;
  EXPECT_EQ(bootTime("cpu  1 2 3\nintr 5 6\nbtime 1772356500\nprocesses 900\n"), 1772356500);
  EXPECT_FALSE(bootTime("cpu  1 2 3\n"));

  const auto psi = [](const std::string& some, const std::string& full) {
    return "some avg10=" + some + " avg60=0.00 avg300=0.00 total=9\n"
           "full avg10=" + full + " avg60=0.00 avg300=0.00 total=0\n";
  };
  EXPECT_EQ(levelFromPSI(psi("0.00", "0.00")), 1);
  EXPECT_EQ(levelFromPSI(psi("10.00", "9.99")), 2);
  EXPECT_EQ(levelFromPSI(psi("45.10", "10.00")), 4);
  EXPECT_FALSE(levelFromPSI("garbage\n"));

  const char* meminfo =
      "MemTotal:       1000000 kB\nMemFree:  1 kB\nMemAvailable:    100000 kB\n"
      "SwapTotal:       2048 kB\nSwapFree:        1024 kB\n";
  EXPECT_EQ(levelFromMeminfo(meminfo), 2);
  EXPECT_EQ(swapUsedFromMeminfo(meminfo), 1024u * 1024u);
  EXPECT_EQ(levelFromMeminfo("MemTotal: 100 kB\nMemAvailable: 4 kB\n"), 4);
  EXPECT_EQ(levelFromMeminfo("MemTotal: 100 kB\nMemAvailable: 15 kB\n"), 1);
  EXPECT_FALSE(levelFromMeminfo("MemTotal: 0 kB\nMemAvailable: 0 kB\n"));
  EXPECT_EQ(swapUsedFromMeminfo(""), 0u);
  // "MemAvailable" must not be read from a longer key that starts the same way.
  EXPECT_FALSE(meminfoValue("MemAvailableX: 5 kB\n", "MemAvailable"));
}

}  // namespace
}  // namespace corvane::platform::linux_proc
