#pragma once
// Short salted hashes that stand in for private names.
#include <string>
#include <string_view>

namespace corvane {

// The first 4 bytes of SHA-256(salt + name) as 8 lower-case hexadecimal digits. The same salt and name
// always give the same digits, so a name hashed in two places can still be matched up.
std::string saltedHash(std::string_view salt, std::string_view name);

}  // namespace corvane
