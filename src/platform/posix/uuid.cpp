#include "platform/uuid.h"

#include <array>
#include <cstdint>
#include <cstdio>

#ifdef __APPLE__
#include <stdlib.h>
#else
#include <random>
#include <sys/random.h>
#endif

namespace corvane::platform {

namespace {

#ifdef __APPLE__
// arc4random_buf draws from the kernel's generator and cannot fail.
std::array<uint8_t, 16> randomBytes() {
  std::array<uint8_t, 16> bytes{};
  arc4random_buf(bytes.data(), bytes.size());
  return bytes;
}
#else
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
#endif

}  // namespace

std::string newUUID() {
  auto b = randomBytes();
  b[6] = static_cast<uint8_t>((b[6] & 0x0F) | 0x40);  // version 4
  b[8] = static_cast<uint8_t>((b[8] & 0x3F) | 0x80);  // RFC 4122 variant
  char text[37];
  std::snprintf(text, sizeof text, "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", b[0],
                b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
  return text;
}

}  // namespace corvane::platform
