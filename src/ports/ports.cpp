#include "ports/ports.h"

#include "platform/port_probe.h"

namespace corvane::Ports {

std::optional<uint16_t> firstFree(uint16_t start) {
  using platform::AddressFamily;
  for (uint32_t p = start; p <= 65535; ++p) {
    const auto port = static_cast<uint16_t>(p);
    if (platform::canBind(AddressFamily::ipv4, port) && platform::canBind(AddressFamily::ipv6, port)) return port;
  }
  return std::nullopt;
}

}  // namespace corvane::Ports
