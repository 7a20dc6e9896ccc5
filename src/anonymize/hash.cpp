#include "anonymize/hash.h"

#include <cstdio>

#include "platform/sha256.h"

namespace corvane {

std::string saltedHash(std::string_view salt, std::string_view name) {
  std::string input;
  input.reserve(salt.size() + name.size());
  input.append(salt).append(name);
  const platform::Sha256Digest digest = platform::sha256(input);
  char hex[9];
  std::snprintf(hex, sizeof hex, "%02x%02x%02x%02x", digest[0], digest[1], digest[2], digest[3]);
  return hex;
}

}  // namespace corvane
