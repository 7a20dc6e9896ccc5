#pragma once
// The tables shared by the pipeline, the classifiers, the stop policy and the anonymizer.
#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace corvane {

using NamePair = std::pair<std::string_view, std::string_view>;

// Process name of a coding agent to its display name.
inline constexpr std::array<NamePair, 4> agentNames = {{
    {"claude", "Claude Code"},
    {"codex", "Codex"},
    {"cursor-agent", "Cursor Agent"},
    {"gemini", "Gemini CLI"},
}};

// Application bundle name to display name; other bundles show their own name.
inline constexpr std::array<NamePair, 3> appNames = {{
    {"Claude", "Claude Code"},
    {"Visual Studio Code", "VS Code"},
    {"iTerm", "iTerm"},
}};

inline constexpr std::array<std::string_view, 12> shells = {
    "zsh", "bash", "sh", "fish", "dash", "nu", "tcsh", "csh", "ksh", "pwsh", "xonsh", "elvish"};

// Editors and terminal multiplexers: a launch chain never climbs past them.
inline constexpr std::array<std::string_view, 12> terminalTools = {
    "nvim", "vim", "vi", "emacs", "hx", "helix", "kak", "micro", "nano", "tmux", "screen", "zellij"};

// Programs inside an application bundle that are tools, not apps.
inline constexpr std::array<std::string_view, 3> inAppToolchains = {
    "/Python.framework/", "/Python3.framework/", "/Contents/Developer/usr/"};

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
