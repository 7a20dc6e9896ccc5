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

TEST(AnonymizeSnapshotTest, ADevelopersStackSharesNoPrivateName) {
  const std::string token = "eyJhbGciOiJSUzI1NiIsImtpZCI6";
  Snapshot snapshot;
  snapshot.taken = dateFromSeconds(1772356600);
  snapshot.procs = {
      makeProc(501, "/bin/zsh", {"-zsh"}, "/Users/ann"),
      makeProc(612, "/opt/homebrew/Cellar/node/22.3.0/bin/node",
               {"node", "/Users/ann/Projects/shop/node_modules/.bin/vite", "--port", "5173"},
               "/Users/ann/Projects/shop"),
      makeProc(640, "/opt/homebrew/opt/postgresql@16/bin/postgres",
               {"/opt/homebrew/opt/postgresql@16/bin/postgres", "-D",
                "/Users/ann/Library/Application Support/Postgres/var-16"},
               "/Users/ann/Library/Application Support/Postgres"),
      makeProc(702, "/Users/ann/.local/bin/claude", {"claude", "--dangerously-skip-permissions"},
               "/Users/ann/Projects/acme-billing"),
      makeProc(731, "/opt/homebrew/bin/kubectl",
               {"kubectl", "--token", token, "port-forward", "svc/billing-db", "5432:5432"},
               "/Users/ann/Projects/acme-billing"),
      makeProc(760, "/usr/bin/ssh", {"ssh", "ann@build.example.com"}, "/Users/ann/Projects/shop"),
      makeProc(790, "/usr/local/bin/docker", {"docker", "compose", "-p", "acme-billing", "up"},
               "/Users/ann/Projects/acme-billing/deploy"),
  };
  const std::string text = toJSON(Anonymizer("/Users/ann", "a fresh salt").anonymize(snapshot)).dump();
  for (const std::string& secret : {std::string("ann"), std::string("shop"), std::string("acme-billing"), token})
    EXPECT_EQ(text.find(secret), std::string::npos) << secret << " in " << text;
  for (const char* tool : {"\"node\"", "\"postgres\"", "\"claude\"", "\"kubectl\""})
    EXPECT_NE(text.find(tool), std::string::npos) << tool << " missing from " << text;
}

}  // namespace
}  // namespace corvane
