#include "support/process.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#ifdef __linux__
#include <sys/prctl.h>
#endif

extern char** environ;

namespace corvane::testing_support {
namespace {

using Clock = std::chrono::steady_clock;

Clock::time_point after(double seconds) {
  return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

bool closingPipe(int ends[2]) {
#ifdef __linux__
  return pipe2(ends, O_CLOEXEC) == 0;
#else
  // macOS has no pipe2: a child forked between the two calls may inherit the ends.
  if (pipe(ends) != 0) return false;
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  fcntl(ends[1], F_SETFD, FD_CLOEXEC);
  return true;
#endif
}

// On Linux the child dies with the test, whatever ends the test.
pid_t forkDyingWithParent() {
  const pid_t pid = fork();
#ifdef __linux__
  if (pid == 0) prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
  return pid;
}

// The strings' texts and a null pointer, as execve takes them.
std::vector<char*> cStrings(std::vector<std::string>& strings) {
  std::vector<char*> texts;
  for (auto& s : strings) texts.push_back(s.data());
  texts.push_back(nullptr);
  return texts;
}

}  // namespace

Process::Process(const std::string& path, const std::vector<std::string>& arguments, ProcessOptions options)
    : grace_(options.grace) {
  std::signal(SIGPIPE, SIG_IGN);  // a program that ends early must not take its writer with it
  int in[2], out[2], err[2] = {-1, -1}, started[2];
  if (!closingPipe(in) || !closingPipe(out) || (options.captureErrors && !closingPipe(err)) ||
      !closingPipe(started))
    return;
  std::vector<std::string> strings{path}, entries;
  strings.insert(strings.end(), arguments.begin(), arguments.end());
  for (char** e = environ; *e; ++e)
    if (!options.env.count(std::string(*e, std::strcspn(*e, "=")))) entries.push_back(*e);
  for (const auto& [name, value] : options.env) entries.push_back(name + "=" + value);
  const auto argv = cStrings(strings), envp = cStrings(entries);

  const pid_t pid = forkDyingWithParent();
  if (pid == 0) {
    std::signal(SIGPIPE, SIG_DFL);
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    if (err[1] >= 0) dup2(err[1], STDERR_FILENO);
    if (options.directory.empty() || chdir(options.directory.c_str()) == 0)
      execve(path.c_str(), argv.data(), envp.data());
    (void)!write(started[1], "!", 1);  // it could not run
    _exit(127);
  }
  for (int end : {in[0], out[1], err[1], started[1]})
    if (end >= 0) close(end);
  input_ = in[1];
  output_ = out[0];
  errors_ = err[0];
  // The write end closes on exec: the end of file means the program runs.
  char failed = 0;
  ssize_t got;
  do got = read(started[0], &failed, 1);
  while (got < 0 && errno == EINTR);
  close(started[0]);
  if (got == 1) waitpid(pid, nullptr, 0);
  pid_ = got == 1 ? -1 : pid;
}

Process::Process(const std::function<void()>& body) : pid_(forkDyingWithParent()) {
  if (pid_ == 0) {
    body();
    _exit(0);
  }
}

Process::~Process() {
  closeInput();
  if (pid_ > 0 && !waitExit(grace_)) {
    kill(pid_, SIGKILL);
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  for (int fd : {output_, errors_})
    if (fd >= 0) close(fd);
}

bool Process::writeAll(std::string_view text) {
  while (input_ >= 0 && !text.empty()) {
    const ssize_t n = write(input_, text.data(), text.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    text.remove_prefix(static_cast<size_t>(n));
  }
  return text.empty();
}

void Process::closeInput() {
  if (input_ >= 0) close(std::exchange(input_, -1));
}

std::optional<std::string> Process::readLine(double seconds) {
  const auto deadline = after(seconds);
  size_t newline;
  while ((newline = out_.find('\n')) == std::string::npos)
    if (output_ < 0 || !fill(deadline)) return std::nullopt;
  std::string line = out_.substr(0, newline);
  out_.erase(0, newline + 1);
  return line;
}

std::optional<std::string> Process::readToEnd(double seconds) {
  const auto deadline = after(seconds);
  while (output_ >= 0 || errors_ >= 0)
    if (!fill(deadline) && (output_ >= 0 || errors_ >= 0)) return std::nullopt;
  return std::exchange(out_, std::string());
}

std::optional<int> Process::waitExit(double seconds) {
  const auto deadline = after(seconds);
  while (pid_ > 0) {
    int status = 0;
    const pid_t done = waitpid(pid_, &status, WNOHANG);
    if (done == pid_) exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (done == pid_ || (done < 0 && errno != EINTR)) {
      pid_ = -1;  // ended, or reaped by someone else: its pid may be another process's now
      break;
    }
    if (Clock::now() >= deadline) return std::nullopt;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return exitCode_;
}

bool Process::fill(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  if (left <= 0) return false;
  pollfd ready[2] = {{output_, POLLIN, 0}, {errors_, POLLIN, 0}};
  const int polled = poll(ready, 2, static_cast<int>(left));
  if (polled <= 0) return polled < 0 && errno == EINTR;
  // poll leaves no events on a closed end (-1).
  for (auto [fd, text] : {std::pair{&output_, &out_}, std::pair{&errors_, &err_}}) {
    if (!(ready[fd == &output_ ? 0 : 1].revents & (POLLIN | POLLHUP | POLLERR))) continue;
    char chunk[4096];
    const ssize_t got = read(*fd, chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) return true;
    if (got > 0) text->append(chunk, static_cast<size_t>(got));
    else close(std::exchange(*fd, -1));
  }
  return output_ >= 0 || errors_ >= 0;
}

ProgramResult runProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::string& input, std::map<std::string, std::string> env) {
  Process program(path, arguments, {.env = std::move(env), .captureErrors = true});
  program.writeAll(input);
  program.closeInput();
  std::string out = program.readToEnd(120).value_or("");
  return {program.waitExit(120).value_or(-1), std::move(out), program.errors()};
}

ProgramResult runCorvane(const std::vector<std::string>& arguments, const std::string& input,
                         std::map<std::string, std::string> env) {
  return runProgram(CORVANE_EXE, arguments, input, std::move(env));
}

std::string systemPython() {
  for (const char* path : {"/usr/bin/python3", "/usr/local/bin/python3"})
    if (access(path, X_OK) == 0) return path;
  return "";
}

}  // namespace corvane::testing_support
