#pragma once
// How each system opens a TCP socket and lays out its addresses; defined in linux/ and darwin/ for
// the shared code of posix/.
#include <netinet/in.h>

namespace corvane::platform::os {

// A new TCP socket of `domain` (AF_INET or AF_INET6); -1 when it can't be made.
int openTcpSocket(int domain);

// Sets the length that BSD socket addresses carry in front; Linux's carry none.
void setAddressLength(sockaddr_in& address);
void setAddressLength(sockaddr_in6& address);

}  // namespace corvane::platform::os
