#pragma once
// Runs a program to its end and captures what it wrote; for tests that drive the real executable.
#include <map>
#include <string>
#include <vector>

namespace corvane::testing_support {

struct ProgramResult {
  int exitCode = -1;  // -1 when it did not exit normally
  std::string out;
  std::string err;
};

// `environment` entries are added to (or replace) the test process's own environment.
ProgramResult runProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::string& input = "",
                         const std::map<std::string, std::string>& environment = {});

// The corvane executable built beside the tests.
ProgramResult runCorvane(const std::vector<std::string>& arguments, const std::string& input = "",
                         const std::map<std::string, std::string>& environment = {});

// A fresh empty directory under the test process's temporary root.
std::string makeTempDir(const std::string& prefix);

}  // namespace corvane::testing_support
