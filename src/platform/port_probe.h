#pragma once
// Whether a TCP port can be bound right now.
#include <cstdint>

namespace corvane::platform {

enum class AddressFamily { ipv4, ipv6 };

// Opens a TCP socket of `family`, binds it to the wildcard address (0.0.0.0 or ::) on `port` and closes it.
// No socket options are set, so an IPv6 bind also fails where an IPv4 listener holds the port on a
// dual-stack system. False when the socket can't be made or the bind fails, whatever the reason.
bool canBind(AddressFamily family, uint16_t port);

}  // namespace corvane::platform
