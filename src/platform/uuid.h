#pragma once
// New random identifiers.
#include <string>

namespace corvane::platform {

// A random (version 4) UUID as upper-case hexadecimal 8-4-4-4-12 with hyphens.
std::string newUUID();

}  // namespace corvane::platform
