// Bundlers, databases, tunnels and dev servers: what makes each, and what names it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::findItem;
using testing::idsOf;
using testing::makeProc;
using testing::worldOf;

const std::string project = "/Users/ann/app";

Proc listener(int32_t pid, const std::string& path, std::vector<std::string> args, const std::string& cwd = project) {
  auto p = makeProc(pid, 1, path, std::move(args), cwd);
  p.listening = {static_cast<uint16_t>(3000 + pid)};
  return p;
}

std::string titleOf(const Proc& p) {
  const auto items = detect(worldOf({p}));
  return items.size() == 1 ? items[0].title : "(" + std::to_string(items.size()) + " rows)";
}

TEST(BundlerTest, NamesFromTheCommandLine) {
  const std::string flutter = "/Users/ann/flutter/bin/cache/flutter_tools.snapshot";
  const std::string dart = "/Users/ann/flutter/bin/cache/dart-sdk/bin/dart";
  const auto items = detect(worldOf({
      makeProc(10, 1, dart, {"dart", "--packages=x", flutter, "attach"}, project),
      makeProc(11, 1, "/Users/ann/flutter/bin/cache/dartaotruntime", {"dartaotruntime", flutter}, "/b"),
      makeProc(12, 1, "/usr/bin/bun", {"bun", "node_modules/react-native/cli.js", "start"}, "/c"),
      makeProc(13, 1, "/usr/bin/node", {"node", "node_modules/expo/bin/cli", "start"}, "/d"),
      makeProc(14, 1, "/usr/bin/python3", {"python3", "react-native", "start"}, "/e"),
      makeProc(15, 1, "/usr/bin/node", {"node", "react-native", "bundle"}, "/f"),
  }));
  EXPECT_THAT(idsOf(items), ElementsAre("bundler:10", "bundler:11", "bundler:12", "bundler:13"));
  EXPECT_EQ(items[0].title, "flutter attach");
  EXPECT_EQ(items[0].key, "bundler:" + project + ":flutter attach");
  EXPECT_EQ(items[1].title, "flutter run");
  EXPECT_EQ(items[2].title, "Metro");
  EXPECT_EQ(items[3].title, "Expo");
}

TEST(DatabaseTest, WorkersBelongToTheirServer) {
  auto server = makeProc(10, 1, "/usr/lib/postgresql/16/bin/postgres", {"postgres", "-D", "/var/pg"});
  server.listening = {5432};
  auto worker = makeProc(11, 10, "/usr/lib/postgresql/16/bin/postgres", {"postgres: walwriter"});
  // A second cluster started by a script is a row of its own.
  auto script = makeProc(20, 1, "/bin/sh", {"sh", "-c", "pg_ctl start"});
  auto second = makeProc(21, 20, "/usr/lib/postgresql/16/bin/postgres", {"postgres", "-D", "/tmp/pg"});
  auto mongo = makeProc(30, 1, "/usr/bin/mongod", {"mongod"});
  const auto items = detect(worldOf({server, worker, script, second, mongo}));
  EXPECT_THAT(idsOf(items), ElementsAre("db:10", "db:21", "db:30"));
  EXPECT_THAT(items[0].pids, ElementsAre(10, 11));
  EXPECT_EQ(items[1].title, "PostgreSQL");
  EXPECT_EQ(items[1].startedBy, std::nullopt);
  EXPECT_EQ(items[2].title, "MongoDB");
  EXPECT_EQ(items[2].key, "db:mongod");
}

TEST(TunnelTest, TitleAndKey) {
  const std::string kubectl = "/usr/local/bin/kubectl";
  const auto items = detect(worldOf({
      makeProc(10, 1, kubectl, {"kubectl", "-n", "dev", "port-forward", "svc/api", "8080:80", "--address", "0.0.0.0"}),
      makeProc(11, 1, kubectl, {"kubectl", "get", "pods", "-w"}),
      makeProc(12, 1, "/opt/homebrew/bin/cloudflared", {"cloudflared", "tunnel", "run", "shop"}),
      makeProc(13, 1, kubectl, {"kubectl", "port-forward", "pod/db"}),
  }));
  EXPECT_THAT(idsOf(items), ElementsAre("tunnel:10", "tunnel:12", "tunnel:13"));
  EXPECT_EQ(items[0].title, "kubectl port-forward svc/api 8080:80");
  EXPECT_EQ(items[0].key, "tunnel:kubectl -n dev port-forward svc/api 8080:80 --address 0.0.0.0");
  EXPECT_EQ(items[1].title, "cloudflared");
  EXPECT_EQ(items[2].title, "kubectl port-forward pod/db");

  // Restarted with other arguments: another pid, another key.
  const auto again = detect(worldOf({makeProc(40, 1, kubectl, {"kubectl", "port-forward", "svc/api", "9090:80"})}));
  EXPECT_EQ(again[0].id, "tunnel:40");
  EXPECT_EQ(again[0].key, "tunnel:kubectl port-forward svc/api 9090:80");
}

TEST(DevServerTest, WhatIsNoDevServer) {
  const std::string node = "/usr/bin/node";
  auto quiet = makeProc(10, 1, node, {"node", "vite"}, project);
  const auto items = detect(worldOf({
      quiet,
      listener(11, node, {"node", "vite"}, "/"),
      listener(12, node, {"node", "vite"}, ""),
      listener(13, "/usr/sbin/cupsd", {"cupsd"}),
      listener(14, "/System/Library/CoreServices/ControlCenter.app/Contents/MacOS/ControlCenter", {}),
      listener(15, "/usr/libexec/rapportd", {}),
      listener(16, "/Library/Apple/System/Library/x", {}),
      listener(17, "/Applications/Cursor.app/Contents/Frameworks/Cursor Helper (Plugin).app/Contents/MacOS/Cursor Helper (Plugin)",
               {"Cursor Helper (Plugin)", "tsserver.js"}),
  }));
  EXPECT_THAT(items, IsEmpty());
}

TEST(DevServerTest, Names) {
  const std::string python = "/Library/Frameworks/Python.framework/Versions/3.12/Resources/Python.app/Contents/MacOS/Python";
  EXPECT_EQ(titleOf(listener(10, python, {"python", "manage.py", "runserver"})), "Django :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/python3", {"python3", "-m", "http.server"})), "Python :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/node", {"node", "server.js"})), "Node :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/local/bin/caddy", {"caddy", "run"})), "caddy :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/ruby", {"ruby", "bin/rails", "server"})), "Rails :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/ruby", {"puma 6.4.2 (tcp://localhost:3000) [app]"})), "Ruby :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/php", {"php", "artisan", "serve"})), "Laravel :3010");
  // The table's order decides, not the order of the arguments; words are compared in lower case.
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/node", {"node", "/app/node_modules/.bin/Vite", "/app/NEXT"})),
            "Next.js :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/node", {"node", "webpack-dev-server"})), "webpack :3010");
  EXPECT_EQ(titleOf(listener(10, "/usr/bin/node", {"next-server (v15.0.1)"})), "Next.js :3010");
}

TEST(DevServerTest, NameComesFromTheWholeLaunchChain) {
  // The listening child carries no known word; the launcher above it does.
  auto npm = makeProc(10, 9, "/usr/bin/node", {"npm run dev"}, project);
  auto shell = makeProc(11, 10, "/bin/sh", {"sh", "-c", "nuxi dev"}, project);
  auto cli = makeProc(12, 11, "/usr/bin/node", {"node", "/app/node_modules/.bin/nuxi", "dev"}, project);
  auto child = listener(13, "/usr/bin/node", {"/usr/bin/node", "/app/node_modules/nuxi/dist/chunks/dev-child.mjs"});
  child.ppid = 12;
  const auto items = detect(worldOf({npm, shell, cli, child}));
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].id, "server:10");
  EXPECT_EQ(items[0].title, "Nuxt :3013");
  EXPECT_EQ(items[0].key, "server:" + project + ":Nuxt");
  EXPECT_THAT(items[0].pids, ElementsAre(10, 11, 12, 13));
}

}  // namespace
}  // namespace corvane
