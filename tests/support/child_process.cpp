#include "support/child_process.h"
#include "support/pipes.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace corvane::testing_support {

namespace {

// On Linux the child dies with the test; elsewhere the destructor's SIGKILL is all there is.
void dieWithParent() {
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
}

}  // namespace

ChildProcess::ChildProcess(const std::string& path, const std::vector<std::string>& args,
                           const std::string& directory) {
  int output[2], started[2];
  if (!makeClosingPipe(output)) return;
  if (!makeClosingPipe(started)) {
    close(output[0]);
    close(output[1]);
    return;
  }
  std::vector<char*> argv;
  for (const auto& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    dieWithParent();
    dup2(output[1], STDOUT_FILENO);
    if (directory.empty() || chdir(directory.c_str()) == 0) execv(path.c_str(), argv.data());
    const char failed = 1;
    (void)!write(started[1], &failed, 1);
    _exit(127);
  }
  close(output[1]);
  close(started[1]);
  char failed = 0;
  // The write end closes on exec: end of file means the program runs.
  ssize_t got;
  do got = read(started[0], &failed, 1);
  while (got < 0 && errno == EINTR);
  close(started[0]);
  output_ = output[0];
  pid_ = pid;
  if (pid > 0 && got == 1) {
    waitpid(pid, nullptr, 0);
    pid_ = -1;
  }
}

ChildProcess::ChildProcess(const std::function<void()>& body) {
  const pid_t pid = fork();
  if (pid == 0) {
    dieWithParent();
    body();
    _exit(0);
  }
  pid_ = pid;
}

ChildProcess::~ChildProcess() {
  if (output_ >= 0) close(output_);
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::string ChildProcess::readLine(double seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (true) {
    if (const auto newline = pending_.find('\n'); newline != std::string::npos) {
      std::string line = pending_.substr(0, newline);
      pending_.erase(0, newline + 1);
      return line;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (output_ < 0 || left.count() <= 0) return "";
    pollfd ready{output_, POLLIN, 0};
    if (poll(&ready, 1, static_cast<int>(left.count())) <= 0) continue;
    char chunk[256];
    const ssize_t got = read(output_, chunk, sizeof chunk);
    if (got <= 0) return "";
    pending_.append(chunk, static_cast<size_t>(got));
  }
}

std::string systemPython() {
  for (const char* path : {"/usr/bin/python3", "/usr/local/bin/python3"})
    if (access(path, X_OK) == 0) return path;
  return "";
}

}  // namespace corvane::testing_support
