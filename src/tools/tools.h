#pragma once
// The outside tools corvane drives (xcrun, adb, emulator, docker): where they are, and how a program
// is run with a time-out and its standard output captured.
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>


namespace corvane::platform {
class DefaultsStore;
}

namespace corvane {

struct Tools {
  struct Output {
    int32_t status = 0;
    std::string data;  // everything written to standard output; standard error is discarded
  };

  std::map<std::string, std::string> paths;  // "xcrun", "adb", "emulator", "docker" when found

  const std::string* path(const std::string& tool) const {
    auto it = paths.find(tool);
    return it == paths.end() ? nullptr : &it->second;
  }

  // Finds the four tools: `known` paths, fixed candidates, then the login shell, with misses remembered
  // for a day in the defaults suite (`defaults` when given, else the desktop app's suite).
  static Tools load(const std::map<std::string, std::string>& known, const platform::DefaultsStore* defaults,
                    const std::string& shell);
};

// Runs a program to its end. Absent when it could not be started or was ended by a signal (as the
// time-out ends it).
std::optional<Tools::Output> run(const std::string& path, const std::vector<std::string>& arguments,
                                 double timeoutSeconds);

// Starts a program with all three standard streams on /dev/null and does not wait for it.
bool launchDetached(const std::string& path, const std::vector<std::string>& arguments);

// The login shell: $SHELL, else the platform's default.
std::string userShell();

}  // namespace corvane
