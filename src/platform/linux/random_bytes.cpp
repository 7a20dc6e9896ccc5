#include <random>
#include <sys/random.h>

#include "platform/posix/random_bytes.h"

namespace corvane::platform::os {

// The kernel's random source; std::random_device only when getrandom is missing or interrupted.
std::array<uint8_t, 16> randomBytes() {
  std::array<uint8_t, 16> bytes{};
  size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t n = getrandom(bytes.data() + filled, bytes.size() - filled, 0);
    if (n <= 0) break;
    filled += static_cast<size_t>(n);
  }
  if (filled < bytes.size()) {
    std::random_device device;
    for (auto& byte : bytes) byte = static_cast<uint8_t>(device());
  }
  return bytes;
}

}  // namespace corvane::platform::os
