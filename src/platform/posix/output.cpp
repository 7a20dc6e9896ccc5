#include "platform/output.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <unistd.h>

#include "platform/files.h"

namespace corvane::platform {

namespace {

std::atomic<int> firstOutputError{0};

}  // namespace

bool writeOut(std::string_view text) {
  if (writeAll(STDOUT_FILENO, text)) return true;
  int none = 0;
  firstOutputError.compare_exchange_strong(none, errno != 0 ? errno : EIO);
  return false;
}

bool writeErr(std::string_view text) { return writeAll(STDERR_FILENO, text); }

std::optional<std::string> outputFailure() {
  const int error = firstOutputError.load();
  if (error == 0) return std::nullopt;
  return std::string(std::strerror(error));
}

void ignoreBrokenPipes() { std::signal(SIGPIPE, SIG_IGN); }

}  // namespace corvane::platform
