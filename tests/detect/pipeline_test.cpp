// The shared machinery of a run: claiming, the climb up a launch chain, who launched a row, agents,
// and the common builder.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "detect/detection.h"
#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using testing::findItem;
using testing::makeProc;
using testing::worldOf;

const std::string node = "/opt/homebrew/bin/node";

TEST(ClaimTest, ClaimsATreeOnceAndSkipsClaimedSubtrees) {
  Detection d(worldOf({makeProc(10, 1, "/bin/zsh"), makeProc(11, 10, node), makeProc(12, 11, node),
                       makeProc(13, 10, node), makeProc(14, 13, node)}));
  EXPECT_THAT(d.claim(13), ElementsAre(13, 14));
  EXPECT_THAT(d.unclaimedDescendants(10), UnorderedElementsAre(11, 12));
  EXPECT_FALSE(d.isClaimed(11));  // looking is not claiming

  const auto rest = d.claim(10);
  EXPECT_EQ(rest.front(), 10);
  EXPECT_THAT(rest, UnorderedElementsAre(10, 11, 12));
  EXPECT_THAT(d.claim(12), IsEmpty());
  EXPECT_THAT(d.unclaimedDescendants(10), IsEmpty());
}

TEST(LaunchRootTest, ClimbsThroughCommandShellsWithinOneFolder) {
  const std::string app = "/Users/ann/app";
  auto interactive = makeProc(10, 9, "/bin/zsh", {"-zsh"}, app);
  auto npm = makeProc(11, 10, node, {"npm run dev"}, app);
  auto shell = makeProc(12, 11, "/bin/sh", {"sh", "-c", "vite"}, app);
  auto vite = makeProc(13, 12, node, {"node", "vite"}, app);
  Detection d(worldOf({interactive, npm, shell, vite}));
  EXPECT_EQ(d.launchRoot(*d.proc(13)), 11);

  // A zsh running a command line is part of the chain; what launched it in another folder is not.
  auto outer = makeProc(20, 19, "/bin/zsh", {"-zsh"}, "/Users/ann");
  auto command = makeProc(21, 20, "/bin/zsh", {"/bin/zsh", "-c", "cd app && npm run dev"}, app);
  auto elsewhere = makeProc(22, 21, "/bin/zsh", {"zsh", "-c", "x"}, "/Users/ann");
  auto npm2 = makeProc(23, 22, node, {"npm run dev"}, app);
  auto npm3 = makeProc(24, 21, node, {"npm run dev"}, app);
  Detection e(worldOf({outer, command, elsewhere, npm2, npm3}));
  EXPECT_EQ(e.launchRoot(*e.proc(24)), 21);
  EXPECT_EQ(e.launchRoot(*e.proc(23)), 23);

  // Editors and multiplexers, apps, agents and claimed processes end the climb too.
  auto tmux = makeProc(30, 1, "/opt/homebrew/bin/tmux", {"tmux"}, app);
  auto underTmux = makeProc(31, 30, node, {"node", "server.js"}, app);
  auto editor = makeProc(32, 1, "/Applications/Zed.app/Contents/MacOS/zed", {}, app);
  auto underEditor = makeProc(33, 32, node, {"node", "server.js"}, app);
  auto agent = makeProc(34, 1, "/usr/local/bin/gemini", {"gemini"}, app);
  auto underAgent = makeProc(35, 34, node, {"node", "server.js"}, app);
  auto claimed = makeProc(36, 1, node, {"node"}, app);
  auto underClaimed = makeProc(37, 36, node, {"node", "server.js"}, app);
  Detection f(worldOf({tmux, underTmux, editor, underEditor, agent, underAgent, claimed, underClaimed}));
  f.claimed.insert(36);
  for (const int32_t pid : {31, 33, 35, 37}) EXPECT_EQ(f.launchRoot(*f.proc(pid)), pid);
}

TEST(LauncherTest, NearestAgentOrApplicationAboveTheProcess) {
  auto code = makeProc(10, 1, "/Applications/Visual Studio Code.app/Contents/MacOS/Electron");
  auto pty = makeProc(11, 10, "/Applications/Visual Studio Code.app/Contents/Frameworks/Code Helper.app/Contents/MacOS/Code Helper");
  auto shell = makeProc(12, 11, "/bin/zsh", {"-zsh"});
  // Homebrew's Python lives in an app bundle inside its framework; it is a tool, not an app.
  auto python = makeProc(13, 12, "/opt/homebrew/Frameworks/Python.framework/Versions/3.12/Resources/Python.app/Contents/MacOS/Python");
  auto child = makeProc(14, 13, node);
  auto foo = makeProc(20, 1, "/Applications/Tools/Foo.app/Contents/MacOS/foo");
  auto underFoo = makeProc(21, 20, node);
  auto claude = makeProc(30, 10, "/Users/ann/.local/share/claude/versions/2.0.14", {"claude"});
  auto underClaude = makeProc(31, 30, "/bin/zsh", {"zsh", "-c", "make"});
  auto make = makeProc(32, 31, "/usr/bin/make");
  Detection d(worldOf({code, pty, shell, python, child, foo, underFoo, claude, underClaude, make}));

  EXPECT_EQ(d.launcher(14), (Launcher{"VS Code", std::nullopt}));
  EXPECT_EQ(d.launcher(13), (Launcher{"VS Code", std::nullopt}));
  EXPECT_EQ(d.launcher(21), (Launcher{"Foo", std::nullopt}));
  EXPECT_EQ(d.launcher(32), (Launcher{"Claude Code", 30}));
  EXPECT_EQ(d.launcher(30), (Launcher{"VS Code", std::nullopt}));
  EXPECT_EQ(d.launcher(10), Launcher{});  // the walk ends where the user's processes end
}

TEST(AgentNameTest, RecognisesAgentsByNameScriptOrInstall) {
  struct Case {
    Proc proc;
    std::optional<std::string> name;
  };
  const Case cases[] = {
      {makeProc(1, 0, "/opt/homebrew/bin/claude", {"claude"}), "Claude Code"},
      {makeProc(1, 0, "/Users/ann/.local/share/claude/versions/2.0.14", {}), "Claude Code"},
      {makeProc(1, 0, "/usr/local/bin/renamed", {"/usr/local/bin/gemini", "-p"}), "Gemini CLI"},
      {makeProc(1, 0, "/opt/codex/codex-aarch64-apple-darwin", {}), "Codex"},
      {makeProc(1, 0, node, {"node", "/Users/ann/.local/share/cursor-agent/versions/1/index.js"}), "Cursor Agent"},
      {makeProc(1, 0, "/usr/bin/bun", {"bun", "/usr/lib/node_modules/@openai/codex/bin/codex"}), "Codex"},
      {makeProc(1, 0, node, {"node"}), std::nullopt},
      {makeProc(1, 0, node, {"node", "server.js"}), std::nullopt},
      {makeProc(1, 0, "/usr/bin/python3", {"python3", "/usr/bin/claude"}), std::nullopt},
      {makeProc(1, 0, "/usr/bin/Claude", {}), std::nullopt},  // names compare case-sensitively
      {makeProc(1, 0, "", {}), std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(agentName(c.proc), c.name) << c.proc.path;
}

TEST(BuilderTest, LauncherNamedLikeTheRowIsDropped) {
  auto app = makeProc(10, 1, "/Applications/Claude.app/Contents/MacOS/Claude");
  auto session = makeProc(11, 10, "/Applications/Claude.app/Contents/Resources/claude", {"claude"}, "/Users/ann/x");
  const auto items = detect(worldOf({app, session}));
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].title, "Claude Code");
  EXPECT_FALSE(items[0].startedBy);
}

TEST(BuilderTest, PortSuffixIsTheLowestPortOfTheTree) {
  auto npx = makeProc(10, 9, node, {"npm exec expo start"}, "/Users/ann/m");
  auto expo = makeProc(11, 10, node, {"node", "/Users/ann/m/node_modules/.bin/expo", "start"}, "/Users/ann/m");
  expo.listening = {19000};
  auto metro = makeProc(12, 11, node, {"node", "metro-worker"}, "/Users/ann/m");
  metro.listening = {8081};
  auto quiet = makeProc(20, 9, node, {"node", "expo/bin/cli", "start"}, "/Users/ann/q");
  auto redis = makeProc(30, 1, "/opt/homebrew/bin/redis-server", {"redis-server", "/tmp/r.sock"});
  const auto items = detect(worldOf({npx, expo, metro, quiet, redis}));
  EXPECT_EQ(findItem(items, "bundler:10")->title, "Expo :8081");
  EXPECT_EQ(findItem(items, "bundler:20")->title, "Expo");
  EXPECT_EQ(findItem(items, "db:30")->title, "Redis");
}

TEST(BuilderTest, AClaimedRootStillMakesAnEmptyRow) {
  Detection d(worldOf({makeProc(10, 1, node)}));
  d.claim(10);
  d.add(Item::Kind::server, "server:10", "k", "Node", 10, "/x", Stop::signal(), false);
  ASSERT_EQ(d.items.size(), 1u);
  EXPECT_THAT(d.items[0].pids, IsEmpty());
  EXPECT_EQ(d.items[0].memory, 0u);
  EXPECT_FALSE(d.items[0].started);
}

}  // namespace
}  // namespace corvane
