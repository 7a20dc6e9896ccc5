// The socket addresses carry their own length in front, as BSD lays them out.
#ifdef __APPLE__

#include "platform/posix/tcp_socket.h"

#include <sys/socket.h>

namespace corvane::platform::os {

static_assert(sizeof(sockaddr_in) == 16 && sizeof(sockaddr_in6) == 28);

// Spawned children inherit only the descriptors they are given, so no close-on-exec flag is needed
// for a socket that lives a few microseconds.
int openTcpSocket(int domain) { return ::socket(domain, SOCK_STREAM, 0); }

void setAddressLength(sockaddr_in& address) { address.sin_len = sizeof address; }

void setAddressLength(sockaddr_in6& address) { address.sin6_len = sizeof address; }

}  // namespace corvane::platform::os

#endif  // __APPLE__
