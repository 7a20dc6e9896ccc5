// Bundlers, databases, tunnels and dev servers: what makes each row, and what names it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::idsOf;
using testing::makeProc;
using testing::worldOf;

const std::string project = "/Users/ann/app";

std::string serverTitle(const std::string& path, std::vector<std::string> args) {
  const auto items = detect(worldOf({makeProc(10, 1, path, std::move(args), project, {3000})}));
  return items.size() == 1 ? items[0].title : std::to_string(items.size()) + " rows";
}

TEST(BundlerTest, NamesFromTheCommandLine) {
  const std::string flutter = "/Users/ann/flutter/bin/cache/flutter_tools.snapshot";
  const auto items = detect(worldOf({
      makeProc(10, 1, "/flutter/bin/cache/dart-sdk/bin/dart", {"dart", "--packages=x", flutter, "attach"}, project),
      makeProc(11, 1, "/flutter/bin/cache/dartaotruntime", {"dartaotruntime", flutter}, "/b"),
      makeProc(12, 1, "/usr/bin/bun", {"bun", "node_modules/react-native/cli.js", "start"}, "/c"),
      makeProc(13, 1, "/usr/bin/python3", {"python3", "react-native", "start"}, "/e"),
      makeProc(14, 1, "/usr/bin/node", {"node", "react-native", "bundle"}, "/f"),
  }));
  ASSERT_THAT(idsOf(items), ElementsAre("bundler:10", "bundler:11", "bundler:12"));
  EXPECT_EQ(items[0].title, "flutter attach");
  EXPECT_EQ(items[0].key, "bundler:" + project + ":flutter attach");
  EXPECT_EQ(items[1].title, "flutter run");
  EXPECT_EQ(items[2].title, "Metro");
}

TEST(DevServerTest, WhatIsNoDevServer) {
  const auto items = detect(worldOf({
      makeProc(10, 1, "/usr/bin/node", {"node", "vite"}, project),
      makeProc(11, 1, "/usr/bin/node", {"node", "vite"}, "/", {3000}),
      makeProc(12, 1, "/usr/bin/node", {"node", "vite"}, "", {3001}),
      makeProc(13, 1, "/usr/sbin/cupsd", {}, project, {631}),
      makeProc(14, 1, "/usr/libexec/rapportd", {}, project, {3002}),
      makeProc(15, 1, "/System/Library/CoreServices/x", {}, project, {3003}),
      makeProc(16, 1, "/Library/Apple/System/Library/x", {}, project, {3004}),
      // An editor's language server runs inside the editor's bundle.
      makeProc(17, 1, "/Applications/Cursor.app/Contents/Frameworks/Cursor Helper (Plugin).app/Contents/MacOS/Cursor Helper (Plugin)",
               {"Cursor Helper (Plugin)", "tsserver.js"}, project, {3005}),
  }));
  EXPECT_THAT(items, IsEmpty());
}

TEST(DevServerTest, Names) {
  EXPECT_EQ(serverTitle("/Library/Frameworks/Python.framework/Versions/3.12/Resources/Python.app/Contents/MacOS/Python",
                        {"python", "manage.py", "runserver"}),
            "Django :3000");
  EXPECT_EQ(serverTitle("/usr/bin/python3", {"python3", "-m", "http.server"}), "Python :3000");
  EXPECT_EQ(serverTitle("/usr/bin/node", {"node", "server.js"}), "Node :3000");
  EXPECT_EQ(serverTitle("/usr/local/bin/caddy", {"caddy", "run"}), "caddy :3000");
  EXPECT_EQ(serverTitle("/usr/bin/ruby", {"puma 6.4.2 (tcp://localhost:3000) [app]"}), "Ruby :3000");
  EXPECT_EQ(serverTitle("/usr/bin/php", {"php", "artisan", "serve"}), "Laravel :3000");
  // The table's order decides, not the arguments'; words compare in lower case.
  EXPECT_EQ(serverTitle("/usr/bin/node", {"node", "/app/node_modules/.bin/Vite", "/app/NEXT"}), "Next.js :3000");
  EXPECT_EQ(serverTitle("/usr/bin/node", {"next-server (v15.0.1)"}), "Next.js :3000");
}

TEST(DevServerTest, NameComesFromTheWholeLaunchChain) {
  const auto items = detect(worldOf({
      makeProc(10, 9, "/usr/bin/node", {"npm run dev"}, project),
      makeProc(11, 10, "/bin/sh", {"sh", "-c", "nuxi dev"}, project),
      makeProc(12, 11, "/usr/bin/node", {"node", "/app/node_modules/.bin/nuxi", "dev"}, project),
      makeProc(13, 12, "/usr/bin/node", {"node", "/app/node_modules/nuxi/dist/dev-child.mjs"}, project, {3000}),
  }));
  ASSERT_THAT(idsOf(items), ElementsAre("server:10"));
  EXPECT_EQ(items[0].key, "server:" + project + ":Nuxt");
  EXPECT_THAT(items[0].pids, ElementsAre(10, 11, 12, 13));
}

}  // namespace
}  // namespace corvane
