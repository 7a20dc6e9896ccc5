#pragma once
// Random identifiers, as the desktop app writes them: upper-case hexadecimal, 8-4-4-4-12 with hyphens.
#include <string>

namespace corvane::platform {

// A new random (version 4) UUID.
std::string randomUUID();

}  // namespace corvane::platform
