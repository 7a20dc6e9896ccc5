#include "platform/posix/defaults_writes.h"

#include "platform/defaults.h"

namespace corvane::platform {

namespace {

std::mutex writeMutex;
bool writesClosed = false;

}  // namespace

std::unique_lock<std::mutex> os::defaultsWriteLock() {
  std::unique_lock<std::mutex> lock(writeMutex);
  if (writesClosed) lock.unlock();
  return lock;
}

void closeDefaults() {
  std::lock_guard<std::mutex> lock(writeMutex);
  writesClosed = true;
}

}  // namespace corvane::platform
