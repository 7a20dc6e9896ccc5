#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "anonymize/anonymizer.h"
#include "anonymize/hash.h"

namespace corvane {
namespace {

Proc makeProc(int32_t pid, std::string path, std::vector<std::string> args, std::string cwd) {
  Proc p;
  p.pid = pid;
  p.ppid = 1;
  p.name = lastPathComponent(path);
  p.path = std::move(path);
  p.args = std::move(args);
  p.cwd = std::move(cwd);
  p.footprint = 100'000'000ULL * static_cast<uint64_t>(pid);
  return p;
}

std::string h(std::string_view name) { return saltedHash("s", name); }

TEST(AnonymizeSnapshotTest, AnExecutableIsHashedWhenItsNameIsPrivateAnywhere) {
  Proc own = makeProc(10, "/Users/ann/tools/shop", {"shop", "--port", "3000"}, "/Users/ann");
  own.listening = {3000};
  own.inbound = 2;
  own.responsible = 7;
  const Proc other = makeProc(11, "/opt/homebrew/bin/node", {"node", "index.js"}, "/Users/ann/Projects/shop");
  const Proc tool = makeProc(12, "/Users/ann/tools/mytool", {"mytool", "--token"}, "/Users/ann");
  const Proc next = makeProc(13, "/opt/homebrew/bin/git", {"git", "status"}, "/Users/ann");
  Snapshot snapshot{{own, other, tool, next}, dateFromSeconds(1772356600)};

  const Anonymizer anonymizer("/Users/ann", "s");
  const Snapshot result = anonymizer.anonymize(snapshot);
  ASSERT_EQ(result.procs.size(), 4u);
  EXPECT_EQ(result.taken, snapshot.taken);

  const Proc& first = result.procs[0];
  EXPECT_EQ(first.path, "~/" + h("tools") + "/" + h("shop"));
  EXPECT_EQ(first.name, h("shop"));
  EXPECT_EQ(first.args, (std::vector<std::string>{h("shop"), "--port", "3000"}));
  EXPECT_EQ(first.cwd, "~");
  Proc untouched = first;
  untouched.path = own.path, untouched.name = own.name, untouched.args = own.args, untouched.cwd = own.cwd;
  EXPECT_EQ(untouched, own);

  EXPECT_EQ(result.procs[1].cwd, "~/Projects/" + h("shop"));
  EXPECT_EQ(result.procs[2].path, "~/" + h("tools") + "/mytool");
  EXPECT_EQ(result.procs[2].name, "mytool");
  // A secret announced at the end of one command line does not hide the start of the next.
  EXPECT_EQ(result.procs[3].args, next.args);

  // Private names belong to one call: alone, the executable keeps its name.
  const Snapshot alone = anonymizer.anonymize(Snapshot{{own}, snapshot.taken});
  EXPECT_EQ(alone.procs[0].name, "shop");
}

}  // namespace
}  // namespace corvane
