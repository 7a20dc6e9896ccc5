#pragma once
// A program driven line by line through pipes on its standard input and output, the way an MCP client
// drives its server. When its owner lets go, its input is closed and it gets a moment to end on its
// own before it is killed; either way it is reaped. Header-only, so that the benchmarks use it too.
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "pipes.h"

extern char** environ;

namespace corvane::testing_support {

class PipedProgram {
 public:
  // Starts `path` with `arguments` (without the program name) and this process's environment; pid() is
  // -1 when it could not be started. Its standard error is this process's.
  PipedProgram(const std::string& path, const std::vector<std::string>& arguments) {
    // A program that ends early must not take its writer with it.
    std::signal(SIGPIPE, SIG_IGN);
    int in[2], out[2];
    if (!makeClosingPipe(in)) return;
    if (!makeClosingPipe(out)) {
      close(in[0]);
      close(in[1]);
      return;
    }
    std::vector<std::string> strings{path};
    strings.insert(strings.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& s : strings) argv.push_back(s.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t pid = -1;
    if (posix_spawn(&pid, path.c_str(), &actions, &attributes, argv.data(), environ) == 0) pid_ = pid;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    input_ = in[1];
    output_ = out[0];
  }

  ~PipedProgram() {
    closeInput();
    if (pid_ > 0 && !waitExit(5)) {
      kill(pid_, SIGKILL);
      while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
      }
    }
    if (output_ >= 0) close(output_);
  }
  PipedProgram(const PipedProgram&) = delete;
  PipedProgram& operator=(const PipedProgram&) = delete;

  pid_t pid() const { return pid_; }

  // Writes `line` and a newline; false when the program no longer reads.
  bool writeLine(std::string_view line) { return writeAll(std::string(line) + "\n"); }
  bool writeAll(std::string_view text) {
    while (!text.empty()) {
      if (input_ < 0) return false;
      const ssize_t n = write(input_, text.data(), text.size());
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return false;
      text.remove_prefix(static_cast<size_t>(n));
    }
    return true;
  }

  void closeInput() {
    if (input_ >= 0) close(input_);
    input_ = -1;
  }

  // The next line of its output without the newline; absent at its end or after `seconds`.
  std::optional<std::string> readLine(double seconds = 10) {
    const auto deadline = after(seconds);
    while (true) {
      if (const auto newline = pending_.find('\n'); newline != std::string::npos) {
        std::string line = pending_.substr(0, newline);
        pending_.erase(0, newline + 1);
        return line;
      }
      if (!fill(deadline)) return std::nullopt;
    }
  }

  // Everything it writes from now until it closes its output; absent when that takes over `seconds`.
  std::optional<std::string> readToEnd(double seconds = 10) {
    const auto deadline = after(seconds);
    while (!ended_)
      if (!fill(deadline) && !ended_) return std::nullopt;
    return std::exchange(pending_, std::string());
  }

  // Its exit code once it has ended (-1 when a signal ended it); absent when it still runs after `seconds`.
  std::optional<int> waitExit(double seconds = 10) {
    if (exitCode_) return exitCode_;
    const auto deadline = after(seconds);
    while (pid_ > 0) {
      int status = 0;
      const pid_t done = waitpid(pid_, &status, WNOHANG);
      if (done == pid_) {
        exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        pid_ = -1;
        break;
      }
      if (done < 0 && errno != EINTR) break;
      if (Clock::now() >= deadline) return std::nullopt;
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return exitCode_;
  }

 private:
  using Clock = std::chrono::steady_clock;
  static Clock::time_point after(double seconds) {
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  }

  // Reads what is there into `pending_`; false at the end of the output or at the deadline.
  bool fill(Clock::time_point deadline) {
    if (output_ < 0 || ended_) return false;
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    pollfd ready{output_, POLLIN, 0};
    const int polled = poll(&ready, 1, static_cast<int>(left));
    if (polled < 0 && errno == EINTR) return true;
    if (polled <= 0) return false;
    char chunk[4096];
    const ssize_t got = read(output_, chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) return true;
    if (got <= 0) {
      ended_ = true;
      return false;
    }
    pending_.append(chunk, static_cast<size_t>(got));
    return true;
  }

  pid_t pid_ = -1;
  int input_ = -1;
  int output_ = -1;
  bool ended_ = false;
  std::string pending_;
  std::optional<int> exitCode_;
};

}  // namespace corvane::testing_support
