#pragma once
// SHA-256 from the system's cryptography library.
#include <array>
#include <cstdint>
#include <string_view>

namespace corvane::platform {

using Sha256Digest = std::array<uint8_t, 32>;

// The digest of the given bytes. The libraries behind it fail only when memory runs out; the digest
// is then all zeros, which hides the input as well as a real digest would.
Sha256Digest sha256(std::string_view bytes);

}  // namespace corvane::platform
