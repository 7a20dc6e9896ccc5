#include "platform/posix/tcp_socket.h"

#include <sys/socket.h>

namespace corvane::platform::os {

int openTcpSocket(int domain) { return ::socket(domain, SOCK_STREAM | SOCK_CLOEXEC, 0); }

void setAddressLength(sockaddr_in&) {}

void setAddressLength(sockaddr_in6&) {}

}  // namespace corvane::platform::os
