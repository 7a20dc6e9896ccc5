// The shared machinery of a run: claiming, the climb up a launch chain, launchers, agents, the builder.
#include <gtest/gtest.h>

#include "detect/agents.h"
#include "detect/detection.h"
#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using testing::makeProc;
using testing::worldOf;

const std::string node = "/opt/homebrew/bin/node";
const std::string app = "/Users/ann/app";

// The climb goes up through command shells within one folder; the launcher is the nearest agent or
// application above, whatever the folders.
TEST(LaunchChainTest, RootAndLauncher) {
  Detection d(worldOf({
      // A zsh running a command line continues the chain, unless it runs in another folder.
      makeProc(20, 19, "/bin/zsh", {"-zsh"}, "/Users/ann"),
      makeProc(21, 20, "/bin/zsh", {"/bin/zsh", "-c", "npm run dev"}, app),
      makeProc(22, 21, node, {"npm run dev"}, app),
      makeProc(23, 21, "/bin/zsh", {"zsh", "-c", "x"}, "/Users/ann"),
      makeProc(24, 23, node, {"npm run dev"}, app),
      // Editors and multiplexers, apps, agents and claimed processes end the climb.
      makeProc(30, 1, "/opt/homebrew/bin/tmux", {"tmux"}, app), makeProc(31, 30, node, {}, app),
      makeProc(32, 1, "/Applications/Zed.app/Contents/MacOS/zed", {}, app), makeProc(33, 32, node, {}, app),
      makeProc(34, 1, "/usr/local/bin/gemini", {"gemini"}, app), makeProc(35, 34, node, {}, app),
      makeProc(36, 1, node, {}, app), makeProc(37, 36, node, {}, app),

      makeProc(110, 1, "/Applications/Visual Studio Code.app/Contents/MacOS/Electron"),
      makeProc(111, 110, "/Applications/Visual Studio Code.app/Contents/Frameworks/Code Helper.app/Contents/MacOS/"
               "Code Helper"),
      makeProc(112, 111, "/bin/zsh"),
      // Homebrew's Python runs from an app bundle inside its framework: a tool, passed over.
      makeProc(113, 112, "/opt/homebrew/Frameworks/Python.framework/Versions/3.12/Resources/Python.app/Contents/MacOS/"
               "Python"),
      makeProc(114, 113, node),
      makeProc(120, 1, "/Applications/Tools/Foo.app/Contents/MacOS/foo"),
      makeProc(121, 120, node),
  }));
  d.claimed.insert(36);
  EXPECT_EQ(d.launchRoot(*d.proc(22)), 21);
  EXPECT_EQ(d.launchRoot(*d.proc(24)), 24);
  for (const int32_t pid : {31, 33, 35, 37}) EXPECT_EQ(d.launchRoot(*d.proc(pid)), pid);

  EXPECT_EQ(d.launcher(114), (Launcher{"VS Code", std::nullopt}));
  EXPECT_EQ(d.launcher(121), (Launcher{"Foo", std::nullopt}));
  EXPECT_EQ(d.launcher(110), Launcher{});
}

// Each executable listens in a project and has started a server there. An application is no row and
// names the server's launcher; a runtime or tool is the server, owning what it started.
TEST(AppPathTest, LinuxInstallsAreAppsRuntimesAndToolsAreNotAgentsByNameScriptOrInstall) {
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {"/usr/share/code/code", "VS Code"},
      {"/snap/code/172/usr/share/code/code", "VS Code"},
      {"/tmp/.mount_CursorAbC123/usr/share/cursor/cursor", "Cursor"},
      {"/home/ann/.local/share/JetBrains/Toolbox/apps/intellij-idea-ultimate/bin/idea", "IntelliJ IDEA"},
      {"/usr/lib/firefox-esr/firefox-esr", "Firefox"},
      {"/app/extra/vscode/code", "VS Code"},
      {"/home/ann/.vscode-server/bin/8b3775030ed1a69b13e4f4c628c612102e30a681/node", "VS Code"},
      {"/usr/libexec/gnome-terminal-server", "GNOME Terminal"},
      {"/usr/bin/kitty", "kitty"},
      {"/home/ann/.local/share/JetBrains/Toolbox/apps/intellij-idea-ultimate/jbr/bin/java", std::nullopt},
      {"/home/ann/.nvm/versions/node/v20.11.0/bin/node", std::nullopt},
      {"/home/ann/shop/node_modules/electron/dist/electron", std::nullopt},
      {"/usr/bin/kitty-tool", std::nullopt},
  };
  for (const auto& [path, name] : cases) {
    SCOPED_TRACE(path);
    const auto items = detect(worldOf({
        makeProc(10, 1, path, {path}, app, {63342}),
        makeProc(11, 10, "/usr/bin/python3", {"python3", "-m", "http.server"}, app, {8000}),
    }));
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].id, name ? "server:11" : "server:10");
    EXPECT_EQ(items[0].startedBy, name);
  }

  const std::pair<Proc, std::optional<std::string>> agents[] = {
      {makeProc(1, 0, "/Users/ann/.local/share/claude/versions/2.0.14"), "Claude Code"},
      {makeProc(1, 0, "/usr/local/bin/renamed", {"/usr/local/bin/gemini"}), "Gemini CLI"},
      {makeProc(1, 0, "/opt/codex/codex-aarch64-apple-darwin"), "Codex"},
      {makeProc(1, 0, node, {"node", "--no-warnings", "/Users/ann/.local/share/cursor-agent/versions/1/index.js"}),
       "Cursor Agent"},
      {makeProc(1, 0, "/usr/bin/bun", {"bun", "/usr/lib/node_modules/@openai/codex/bin/codex"}), "Codex"},
      // The runtime's options come before the script; a native program or a script may end in .exe or .js.
      {makeProc(1, 0, node, {node, "--max-old-space-size=9", "/usr/lib/node_modules/@google/gemini-cli/bin/gemini"}),
       "Gemini CLI"},
      {makeProc(1, 0, "/usr/lib/node_modules/@anthropic-ai/claude-code/bin/claude.exe"), "Claude Code"},
      // Common names count where the package's path or a runtime's script agrees, nowhere else.
      {makeProc(1, 0, "/usr/lib/node_modules/opencode-ai/bin/opencode.exe", {"opencode"}), "opencode"},
      {makeProc(1, 0, "/usr/lib/node_modules/@github/copilot-linux-x64/copilot", {"MainThread"}), "Copilot CLI"},
      {makeProc(1, 0, node, {"node", "/usr/local/bin/qwen"}), "Qwen Code"},
      {makeProc(1, 0, "/usr/local/bin/opencode", {"opencode"}), std::nullopt},
      {makeProc(1, 0, "/usr/local/bin/copilot", {"copilot", "svc", "deploy"}), std::nullopt},
      {makeProc(1, 0, "/opt/zed/node/@github/copilot-language-server-linux-x64/copilot-language-server"), std::nullopt},
      {makeProc(1, 0, node, {"node"}), std::nullopt},
      {makeProc(1, 0, node, {"node", "--inspect"}), std::nullopt},
      {makeProc(1, 0, node, {"node", "server.js"}), std::nullopt},
      {makeProc(1, 0, "/usr/bin/python3", {"python3", "/usr/bin/claude"}), std::nullopt},
      {makeProc(1, 0, "/usr/bin/Claude"), std::nullopt},
  };
  for (const auto& [proc, name] : agents) EXPECT_EQ(agentDisplayName(proc), name) << proc.path;
}

}  // namespace
}  // namespace corvane
