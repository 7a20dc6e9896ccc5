#pragma once
// Processes a test starts for itself, and the only way tests and benchmarks start one: its standard
// input and output are pipes, its standard error is inherited or captured, and whatever still runs
// when the owner lets go is killed and reaped, so that nothing outlives the test (on Linux it also
// dies with the test process).
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace corvane::testing_support {

struct ProcessOptions {
  std::map<std::string, std::string> env{};  // added to, or replacing, the test process's environment
  std::string directory{};                   // where it runs; the test's own when empty
  bool captureErrors = false;              // standard error into errors() instead of the test's
  double grace = 0;                        // seconds it may take to end on its own once its input closes
};

struct ProgramResult {
  int exitCode = -1;  // -1 when it did not exit normally
  std::string out;
  std::string err;
};

class Process {
 public:
  // Runs `path` with `arguments` (the program name not included). Returns once the program runs;
  // pid() is -1 when it could not be started.
  Process(const std::string& path, const std::vector<std::string>& arguments, ProcessOptions options = {});
  // A forked copy of the test that runs `body` and then exits.
  explicit Process(const std::function<void()>& body);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }

  // Writes `line` and a newline; false when the program no longer reads.
  bool writeLine(std::string_view line) { return writeAll(std::string(line) + "\n"); }
  bool writeAll(std::string_view text);
  void closeInput();

  // The next line of its output without the newline; absent at its end or after `seconds`.
  std::optional<std::string> readLine(double seconds = 10);
  // Everything it writes from now until it closes its output (and its captured standard error);
  // absent when that takes over `seconds`.
  std::optional<std::string> readToEnd(double seconds = 10);
  const std::string& errors() const { return err_; }

  // Its exit code once it has ended (-1 when a signal ended it); absent when it still runs after `seconds`.
  std::optional<int> waitExit(double seconds = 10);

 private:
  using Clock = std::chrono::steady_clock;
  // Reads what is there on its output and captured errors; false at their end or at the deadline.
  bool fill(Clock::time_point deadline);

  pid_t pid_ = -1;
  int input_ = -1, output_ = -1, errors_ = -1;
  double grace_ = 0;
  std::string out_, err_;
  std::optional<int> exitCode_;
};

// Runs a program to its end with `input` on its standard input and captures what it wrote.
ProgramResult runProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::string& input = "", std::map<std::string, std::string> env = {});

// The corvane executable built beside the tests.
ProgramResult runCorvane(const std::vector<std::string>& arguments, const std::string& input = "",
                         std::map<std::string, std::string> env = {});

// The path of the system's Python 3, or "" when there is none.
std::string systemPython();

}  // namespace corvane::testing_support
