#ifdef __APPLE__

#include <stdlib.h>

#include "platform/posix/random_bytes.h"

namespace corvane::platform::os {

// arc4random_buf draws from the kernel's generator and cannot fail.
std::array<uint8_t, 16> randomBytes() {
  std::array<uint8_t, 16> bytes{};
  arc4random_buf(bytes.data(), bytes.size());
  return bytes;
}

}  // namespace corvane::platform::os

#endif  // __APPLE__
