#pragma once
// What the anonymizer leaves readable, and what makes it hide the next word.
#include <array>
#include <string_view>

namespace corvane {

// Paths that start with one of these (after the home directory became "~") are shared as they are.
inline constexpr std::array<std::string_view, 10> publicPrefixes = {
    "/System/", "/usr/", "/bin/", "/sbin/", "/Library/", "/Applications/", "/opt/homebrew/", "/opt/local/",
    "/private/etc/", "/dev/"};

// Path components every developer's machine has: system folders, tool names, well-known folder names.
// The process names of coding agents (also ending in ".exe" or ".js") and databases, and the words that
// name dev servers, are public too (see isPublicName).
inline constexpr std::array<std::string_view, 113> fixedPublicNames = {
    "Desktop", "Documents", "Downloads", "dev", "code", "projects", "Projects", "work", "repos", "git", "github",
    "Sites", "workspace", "start", "serve", "server", "test", "watch", "preview", "main", "index", "Users",
    "Shared", "Library", "Developer", "CoreSimulator", "Devices", "Xcode", "UserData", "Previews",
    "Simulator Devices", "DerivedData", "Build", "Products", "Debug", "Release", "Debug-iphonesimulator", "data",
    "Containers", "Bundle", "Application", "Application Support", "Caches", "Logs", "Applications", "Contents",
    "MacOS", "Frameworks", "Resources", "XPCServices", "Versions", "Current", "A", "Android", "sdk", "emulator",
    "qemu", "platform-tools", "build-tools", "cmdline-tools", "system-images", "avd", "daemon", "wrapper", "dists",
    "caches", "bin", "sbin", "lib", "libexec", "share", "etc", "var", "run", "tmp", "private", "opt", "usr",
    "local", "homebrew", "Cellar", "versions", "installation", "node", "bun", "deno", "java", "jbr", "python",
    "ruby", "go", "flutter", "dart", "cache", "gradle", "kotlin", "node_modules", "src", "dist", "build", "out",
    "target", "debug", "release", "localhost", "react-native", "expo", "cli", "cli.js",
    "flutter_tools.snapshot", "launchd_sim", "launchd_bootstrap.plist", "device.plist",
};

// A word containing one of these (in lower case) announces that the next word is a secret.
inline constexpr std::array<std::string_view, 6> secretWords = {"key", "token", "secret", "pass", "auth",
                                                                "credential"};

// Hosts after an "@" that say nothing about the user.
inline constexpr std::array<std::string_view, 2> localHosts = {"localhost", "127.0.0.1"};

// Characters that split an argument into words, besides whitespace.
inline constexpr std::string_view wordSeparators = ":=,;\"'";

// A fixed public name, the process name of a coding agent or a database, or a dev server's word.
bool isPublicName(std::string_view component);

// A character (see characters()) that is white space of any kind, no-break spaces and line
// separators included, or one of wordSeparators.
bool isWordSeparator(std::string_view character);

}  // namespace corvane
