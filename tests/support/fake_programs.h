#pragma once
// Fake tools for tests, as shell scripts in the test's own temporary directories, and environment
// variables that are put back when the test ends.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <unistd.h>

namespace corvane::testing_support {

// A fresh empty directory under the test process's temporary root.
inline std::string makeTempDir(const std::string& prefix) {
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp ? tmp : "/tmp") + "/" + prefix + "-XXXXXX";
  return mkdtemp(pattern.data()) ? pattern : std::string();
}

// Writes "#!/bin/sh" and `body` to `path` (making its directory) and makes it executable.
inline std::string writeScript(const std::string& path, const std::string& body) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path) << "#!/bin/sh\n" << body;
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Sets, or with no value unsets, an environment variable for the object's lifetime.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) old_ = old;
    set(value);
  }
  ~ScopedEnv() { set(old_); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  void set(const std::optional<std::string>& value) {
    value ? setenv(name_.c_str(), value->c_str(), 1) : unsetenv(name_.c_str());
  }
  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace corvane::testing_support
