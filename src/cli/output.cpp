#include "cli/output.h"

#include <cerrno>
#include <unistd.h>

namespace corvane {

namespace {

void writeAll(int fd, std::string_view text) {
  while (!text.empty()) {
    ssize_t n = ::write(fd, text.data(), text.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return;
    }
    text.remove_prefix(static_cast<size_t>(n));
  }
}

}  // namespace

void writeOut(std::string_view text) { writeAll(STDOUT_FILENO, text); }

void writeErr(std::string_view text) { writeAll(STDERR_FILENO, text); }

}  // namespace corvane
