#pragma once
// The user's files a test may make corvane write: always in folders of the test's own.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/fake_programs.h"

// On macOS the desktop app's defaults suite is the real user's preferences, and Application Support
// is found through the password database: no environment variable moves either into a test's own
// folder there. A test that makes corvane write either skips itself on macOS rather than touch the
// real user's files.
#ifdef __APPLE__
#define SKIP_WHERE_USER_FILES_CANNOT_MOVE() \
  GTEST_SKIP() << "on macOS this would write the real user's preferences or Application Support"
#else
#define SKIP_WHERE_USER_FILES_CANNOT_MOVE() static_cast<void>(0)
#endif

namespace corvane::testing_support {

// A folder of the test's own that holds the activity log and the defaults suite while the object
// lives; the executable finds them through the environment it inherits.
struct OwnFolders {
  OwnFolders()
      : root(std::filesystem::canonical(makeTempDir("own"))),
        data("XDG_DATA_HOME", root + "/data"),
        config("XDG_CONFIG_HOME", root + "/config") {}

  // A project folder (a repository) named like its temporary folder, so its name is unique.
  static std::string makeProject() {
    const std::string project = std::filesystem::canonical(makeTempDir("shop"));
    std::filesystem::create_directories(project + "/.git");
    return project;
  }
  bool logTouched() const { return std::filesystem::exists(root + "/data/Corvane"); }

  const std::string root;
  ScopedEnv data, config;
};

}  // namespace corvane::testing_support
