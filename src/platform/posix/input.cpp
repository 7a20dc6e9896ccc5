#include "platform/input.h"

#include <poll.h>
#include <unistd.h>
#include <cerrno>

namespace corvane::platform {

std::optional<std::string> InputLines::next() {
  for (;;) {
    const size_t newline = buffered_.find('\n');
    if (newline != std::string::npos) {
      std::string line = buffered_.substr(0, newline);
      buffered_.erase(0, newline + 1);
      return line;
    }
    if (ended_ || !fill()) {
      ended_ = true;
      if (buffered_.empty()) return std::nullopt;
      std::string last;
      last.swap(buffered_);
      return last;
    }
  }
}

bool InputLines::fill() {
  for (;;) {
    // Waiting here first keeps a non-blocking input from turning the loop into a busy one.
    pollfd entry{STDIN_FILENO, POLLIN, 0};
    if (poll(&entry, 1, -1) < 0 && errno != EINTR) return false;
    char chunk[65536];
    const ssize_t n = read(STDIN_FILENO, chunk, sizeof chunk);
    if (n > 0) {
      buffered_.append(chunk, static_cast<size_t>(n));
      return true;
    }
    if (n == 0) return false;
    if (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK) return false;
  }
}

}  // namespace corvane::platform
