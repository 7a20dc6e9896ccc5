#pragma once
// The stand-in container engine of tests/fixtures/fake_engine.py, on a socket in a fresh temporary
// directory; it ends with the object.
#include <string>

#include "support/fake_programs.h"
#include "support/process.h"

namespace corvane::testing_support {

struct FakeEngine {
  explicit FakeEngine(const std::string& mode)
      : socket(makeTempDir("engine") + "/engine.sock"),
        server(systemPython(), {CORVANE_FIXTURES "/fake_engine.py", socket, mode}, {.grace = 5}) {
    ready = server.readLine(10) == "ready";
  }

  std::string host() const { return "unix://" + socket; }

  std::string socket;
  Process server;
  bool ready = false;
};

}  // namespace corvane::testing_support
