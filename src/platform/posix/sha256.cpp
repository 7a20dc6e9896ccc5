#include "platform/sha256.h"

#ifdef __APPLE__
#include <CommonCrypto/CommonDigest.h>
#include <algorithm>
#include <limits>
#else
#include <openssl/evp.h>
#endif

namespace corvane::platform {

#ifdef __APPLE__

static_assert(CC_SHA256_DIGEST_LENGTH == sizeof(Sha256Digest));

Sha256Digest sha256(std::string_view bytes) {
  // CommonCrypto takes 32-bit lengths, so longer input goes in pieces.
  constexpr size_t piece = std::numeric_limits<CC_LONG>::max();
  CC_SHA256_CTX context;
  if (CC_SHA256_Init(&context) != 1) return Sha256Digest{};
  for (size_t at = 0; at < bytes.size(); at += piece) {
    const size_t length = std::min(piece, bytes.size() - at);
    if (CC_SHA256_Update(&context, bytes.data() + at, static_cast<CC_LONG>(length)) != 1) return Sha256Digest{};
  }
  Sha256Digest digest{};
  if (CC_SHA256_Final(digest.data(), &context) != 1) return Sha256Digest{};
  return digest;
}

#else

Sha256Digest sha256(std::string_view bytes) {
  Sha256Digest digest{};
  unsigned int size = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_sha256(), nullptr) != 1 ||
      size != digest.size())
    return Sha256Digest{};
  return digest;
}

#endif

}  // namespace corvane::platform
