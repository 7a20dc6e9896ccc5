#pragma once
// Processes a test starts for itself: killed and reaped when the test lets go of them.
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace corvane::testing_support {

class ChildProcess {
 public:
  // Runs the program at `path` with `args` (args[0] included) in `directory` (when not empty). Returns
  // once the program runs; pid() is -1 when it could not be started. Its standard output is a pipe.
  ChildProcess(const std::string& path, const std::vector<std::string>& args, const std::string& directory = "");
  // A forked copy of the test that runs `body` and then exits.
  explicit ChildProcess(const std::function<void()>& body);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  // The next line of its standard output without the newline; "" at its end or after `seconds`.
  std::string readLine(double seconds = 10);

 private:
  pid_t pid_ = -1;
  int output_ = -1;
  std::string pending_;
};

// The path of the system's Python 3, or "" when there is none.
std::string systemPython();

}  // namespace corvane::testing_support
