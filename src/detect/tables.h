#pragma once
// The tables shared by the pipeline, the classifiers, the stop policy and the anonymizer.
#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace corvane {

using NamePair = std::pair<std::string_view, std::string_view>;

// Process name of a coding agent to its display name. Names are looked up without a trailing ".exe" or
// ".js": npm packages ship native programs as "bin/claude.exe" and scripts as "cli.js".
inline constexpr std::array<NamePair, 7> agentNames = {{
    {"claude", "Claude Code"},
    {"codex", "Codex"},
    {"copilot", "Copilot CLI"},
    {"cursor-agent", "Cursor Agent"},
    {"gemini", "Gemini CLI"},
    {"opencode", "opencode"},
    {"qwen", "Qwen Code"},
}};

// Agent names too common to trust alone, to the package folder their native program lies in: such a
// process is the agent only when its path lies there, or when a runtime runs a script of that name.
inline constexpr std::array<NamePair, 3> commonAgentNames = {{
    {"copilot", "/@github/copilot-"},  // the platform's package: @github/copilot-linux-x64, -darwin-arm64, ...
    {"opencode", "/opencode-ai/"},
    {"qwen", "/@qwen-code/"},
}};

// Application bundle name to display name; other bundles show their own name.
inline constexpr std::array<NamePair, 3> appNames = {{
    {"Claude", "Claude Code"},
    {"Visual Studio Code", "VS Code"},
    {"iTerm", "iTerm"},
}};

// Where installed desktop applications live on Linux, to their display names; the first that matches
// names the app. A fragment ending in "/" is a folder the executable lies anywhere below; any other is
// the end of the executable's path. Either may stand anywhere in the path, so the same install is found
// inside a snap, an AppImage mount or a copy under another root. Runtimes and build tools are left out
// on purpose: a JVM, node, dotnet or Electron run from a project serves that project.
inline constexpr std::array<NamePair, 41> linuxApps = {{
    // Editors and IDEs. JetBrains IDEs start from their native launcher in the install's bin folder
    // (Toolbox, tarball, snap); the runtime they bundle (jbr/bin/java) also runs the user's builds.
    {"/usr/share/code/", "VS Code"},
    {"/app/extra/vscode/", "VS Code"},
    {"/.vscode-server/bin/", "VS Code"},
    {"/.vscode-server/cli/", "VS Code"},
    {"/usr/share/code-insiders/", "VS Code Insiders"},
    {"/usr/share/cursor/", "Cursor"},
    {"/.cursor-server/bin/", "Cursor"},
    {"/.cursor-server/cli/", "Cursor"},
    {"/usr/share/windsurf/", "Windsurf"},
    {"/zed-editor", "Zed"},
    {"/sublime_text/sublime_text", "Sublime Text"},
    {"/bin/idea", "IntelliJ IDEA"},
    {"/bin/pycharm", "PyCharm"},
    {"/bin/webstorm", "WebStorm"},
    {"/bin/goland", "GoLand"},
    {"/bin/clion", "CLion"},
    {"/bin/rider", "Rider"},
    {"/bin/rubymine", "RubyMine"},
    {"/bin/phpstorm", "PhpStorm"},
    {"/bin/datagrip", "DataGrip"},
    {"/bin/rustrover", "RustRover"},
    {"/android-studio/bin/studio", "Android Studio"},
    // Browsers.
    {"/opt/google/chrome/", "Google Chrome"},
    {"/usr/lib/chromium/", "Chromium"},
    {"/opt/microsoft/msedge/", "Microsoft Edge"},
    {"/opt/brave.com/brave/", "Brave"},
    {"/usr/lib/firefox/", "Firefox"},
    {"/usr/lib/firefox-esr/", "Firefox"},
    // Chat and music clients.
    {"/usr/lib/slack/", "Slack"},
    {"/usr/share/discord/", "Discord"},
    {"/usr/share/spotify/", "Spotify"},
    // Terminal emulators: the process the shells of their windows run under.
    {"/gnome-terminal-server", "GNOME Terminal"},
    {"/ptyxis-agent", "Ptyxis"},
    {"/bin/konsole", "Konsole"},
    {"/bin/kitty", "kitty"},
    {"/bin/alacritty", "Alacritty"},
    {"/bin/wezterm-gui", "WezTerm"},
    {"/bin/ghostty", "Ghostty"},
    {"/bin/tilix", "Tilix"},
    {"/bin/xfce4-terminal", "Xfce Terminal"},
    {"/bin/xterm", "xterm"},
}};

inline constexpr std::array<std::string_view, 12> shells = {
    "zsh", "bash", "sh", "fish", "dash", "nu", "tcsh", "csh", "ksh", "pwsh", "xonsh", "elvish"};

// Editors and terminal multiplexers: a launch chain never climbs past them.
inline constexpr std::array<std::string_view, 12> terminalTools = {
    "nvim", "vim", "vi", "emacs", "hx", "helix", "kak", "micro", "nano", "tmux", "screen", "zellij"};

// Programs inside an application bundle that are tools, not apps.
inline constexpr std::array<std::string_view, 3> inAppToolchains = {
    "/Python.framework/", "/Python3.framework/", "/Contents/Developer/usr/"};

// Words seen in a server's command lines, tried in this order; the first one present names the server.
inline constexpr std::array<NamePair, 24> serverNames = {{
    {"next", "Next.js"},      {"vite", "Vite"},       {"nuxt", "Nuxt"},
    {"nuxi", "Nuxt"},         {"astro", "Astro"},     {"remix", "Remix"},
    {"storybook", "Storybook"}, {"webpack", "webpack"}, {"webpack-dev-server", "webpack"},
    {"wrangler", "Wrangler"}, {"vercel", "Vercel"},   {"netlify", "Netlify"},
    {"firebase", "Firebase"}, {"convex", "Convex"},   {"rails", "Rails"},
    {"puma", "Rails"},        {"runserver", "Django"}, {"uvicorn", "uvicorn"},
    {"gunicorn", "gunicorn"}, {"flask", "Flask"},     {"hugo", "Hugo"},
    {"jekyll", "Jekyll"},     {"artisan", "Laravel"}, {"phx.server", "Phoenix"},
}};

// Database process name to display name.
inline constexpr std::array<NamePair, 6> databaseNames = {{
    {"postgres", "PostgreSQL"},
    {"redis-server", "Redis"},
    {"mysqld", "MySQL"},
    {"mariadbd", "MariaDB"},
    {"mongod", "MongoDB"},
    {"valkey-server", "Valkey"},
}};

template <size_t N>
constexpr std::optional<std::string_view> lookup(const std::array<NamePair, N>& table, std::string_view name) {
  for (const auto& [key, value] : table)
    if (key == name) return value;
  return std::nullopt;
}

template <size_t N>
constexpr bool contains(const std::array<std::string_view, N>& list, std::string_view name) {
  for (auto entry : list)
    if (entry == name) return true;
  return false;
}

}  // namespace corvane
