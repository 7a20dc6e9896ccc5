// The system's <netinet/in.h> with macOS's socket addresses, which carry their length in front.
#pragma once
#define sockaddr_in system_sockaddr_in
#define sockaddr_in6 system_sockaddr_in6
#include_next <netinet/in.h>
#undef sockaddr_in
#undef sockaddr_in6

struct sockaddr_in {
  uint8_t sin_len;
  uint8_t sin_family;
  in_port_t sin_port;
  struct in_addr sin_addr;
  char sin_zero[8];
};
static_assert(sizeof(struct sockaddr_in) == 16);

struct sockaddr_in6 {
  uint8_t sin6_len;
  uint8_t sin6_family;
  in_port_t sin6_port;
  uint32_t sin6_flowinfo;
  struct in6_addr sin6_addr;
  uint32_t sin6_scope_id;
};
static_assert(sizeof(struct sockaddr_in6) == 28);
