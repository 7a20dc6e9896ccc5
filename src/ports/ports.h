#pragma once
// The free-port finder: a TCP port nothing listens on yet, over IPv4 or IPv6. The answer is a snapshot;
// the port is not kept, and another program may take it right after.
#include <cstdint>
#include <optional>

namespace corvane::Ports {

// The first port from `start` up to 65535 that binds on both 0.0.0.0 and ::. Never wraps below `start`.
std::optional<uint16_t> firstFree(uint16_t start);

}  // namespace corvane::Ports
