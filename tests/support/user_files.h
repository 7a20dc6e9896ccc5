#pragma once
// On macOS the desktop app's defaults suite is the real user's preferences, and Application Support
// is found through the password database: no environment variable moves either into a test's own
// folder there. A test that makes corvane write either skips itself on macOS rather than touch the
// real user's files.
#include <gtest/gtest.h>

#ifdef __APPLE__
#define SKIP_WHERE_USER_FILES_CANNOT_MOVE() \
  GTEST_SKIP() << "on macOS this would write the real user's preferences or Application Support"
#else
#define SKIP_WHERE_USER_FILES_CANNOT_MOVE() static_cast<void>(0)
#endif
