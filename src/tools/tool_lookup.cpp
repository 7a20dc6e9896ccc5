// Finding the outside tools. Fixed places cost nothing; a login shell knows the user's PATH but costs
// a process start, so a tool the shell could not find is not asked for again for a day. That record
// lives in the desktop app's defaults suite, so the app and corvane share what they learned.
#include <array>
#include <cstdlib>
#include <string_view>

#include "platform/defaults.h"
#include "platform/paths.h"
#include "platform/tool_locations.h"
#include "tools/tools.h"
#include "base/utf8.h"

namespace corvane {

namespace {

constexpr std::array<std::string_view, 4> toolNames = {"xcrun", "adb", "emulator", "docker"};
constexpr const char* missesKey = "toolMisses";
constexpr double missLifetimeSeconds = 86400;
constexpr double lookupTimeoutSeconds = 5;

using Misses = std::map<std::string, Date>;

Misses readMisses(const platform::DefaultsStore& store) {
  const auto stored = store.readDictionary(missesKey);
  if (!stored) return {};
  Misses misses;
  for (const auto& [tool, value] : *stored) {
    const Date* date = std::get_if<Date>(&value);
    if (!date) return {};
    misses.emplace(tool, *date);
  }
  return misses;
}

void writeMisses(const platform::DefaultsStore& store, const Misses& misses) {
  platform::DefaultsDictionary dictionary;
  for (const auto& [tool, date] : misses) dictionary.emplace(tool, date);
  store.writeDictionary(missesKey, dictionary);
}

// Set variables count even when empty; whether a root exists is left to the executable test.
std::vector<std::string> androidSDKRoots() {
  std::vector<std::string> roots;
  for (const char* variable : {"ANDROID_HOME", "ANDROID_SDK_ROOT"}) {
    if (const char* value = std::getenv(variable)) roots.emplace_back(value);
  }
  roots.push_back(platform::defaultAndroidSDKRoot());
  return roots;
}

std::vector<std::string> candidatesFor(std::string_view tool, const std::vector<std::string>& sdkRoots) {
  std::vector<std::string> candidates;
  if (tool == "xcrun") candidates.emplace_back("/usr/bin/xcrun");
  if (tool == "adb")
    for (const auto& root : sdkRoots) candidates.push_back(root + "/platform-tools/adb");
  if (tool == "emulator")
    for (const auto& root : sdkRoots) candidates.push_back(root + "/emulator/emulator");
  if (tool == "docker") candidates = platform::dockerCandidates();
  return candidates;
}

std::string trimmed(const std::string& text) {
  constexpr std::string_view whitespace = " \t\n\r\v\f";
  const auto first = text.find_first_not_of(whitespace);
  if (first == std::string::npos) return {};
  const auto last = text.find_last_not_of(whitespace);
  return text.substr(first, last - first + 1);
}

// Asks the user's login shell, which has the PATH the user set up, where the tool is.
std::optional<std::string> lookUpInLoginShell(const std::string& shell, std::string_view tool) {
  const auto result = run(shell, {"-lc", "command -v " + std::string(tool)}, lookupTimeoutSeconds);
  if (!result || result->status != 0) return std::nullopt;
  std::string path = trimmed(repairedUTF8(result->data));
  if (!platform::isExecutableFile(path)) return std::nullopt;
  return path;
}

}  // namespace

Tools Tools::load(const std::map<std::string, std::string>& known, const platform::DefaultsStore* defaults,
                  const std::string& shell) {
  const platform::DefaultsStore store = defaults ? *defaults : platform::DefaultsStore::appSuite();
  Misses misses = readMisses(store);
  const std::vector<std::string> sdkRoots = androidSDKRoots();
  const Date started = now();

  Tools tools;
  for (const std::string_view toolView : toolNames) {
    const std::string tool(toolView);
    const auto knownPath = known.find(tool);
    if (knownPath != known.end() && platform::isExecutableFile(knownPath->second)) {
      tools.paths[tool] = knownPath->second;
      continue;
    }
    bool found = false;
    for (const auto& candidate : candidatesFor(tool, sdkRoots)) {
      if (!platform::isExecutableFile(candidate)) continue;
      tools.paths[tool] = candidate;
      found = true;
      break;
    }
    if (found) continue;
    const auto miss = misses.find(tool);
    const bool missedRecently = miss != misses.end() && secondsBetween(miss->second, started) < missLifetimeSeconds;
    if (knownPath == known.end() && missedRecently) continue;
    if (auto path = lookUpInLoginShell(shell, tool)) {
      tools.paths[tool] = std::move(*path);
      misses.erase(tool);
    } else {
      misses[tool] = now();
    }
  }
  writeMisses(store, misses);
  return tools;
}

}  // namespace corvane
