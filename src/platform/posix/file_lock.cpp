#include "platform/file_lock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace corvane::platform {

// On macOS the desktop app takes the same flock on the same file, so the two never interleave their
// appends.
ExclusiveFileLock::ExclusiveFileLock(const std::string& path) {
  fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd_ < 0) return;
  int result;
  do {
    result = ::flock(fd_, LOCK_EX);
  } while (result != 0 && errno == EINTR);
  locked_ = result == 0;
}

ExclusiveFileLock::~ExclusiveFileLock() {
  if (fd_ >= 0) ::close(fd_);
}

}  // namespace corvane::platform
