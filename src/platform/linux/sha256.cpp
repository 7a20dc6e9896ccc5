#include "platform/sha256.h"

#include <openssl/evp.h>

namespace corvane::platform {

Sha256Digest sha256(std::string_view bytes) {
  Sha256Digest digest{};
  unsigned int size = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_sha256(), nullptr) != 1 ||
      size != digest.size())
    return Sha256Digest{};
  return digest;
}

}  // namespace corvane::platform
