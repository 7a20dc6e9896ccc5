#pragma once
// The user's TCP sockets of the whole machine, read once per snapshot: socket inode -> local port
// and state. Processes are then matched to it through the "socket:[INODE]" links of their fds.
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "platform/process_table.h"

namespace corvane::platform::linux_proc {

using TcpTable = std::unordered_map<uint64_t, TcpSocket>;

// Listening and established sockets of `uid` with an inode (a socket no process holds has none).
// Asks the kernel through sock_diag netlink, one dump per family (dual-stack sockets and their IPv4
// connections show in the IPv6 dump only); when a dump fails, /proc/net/tcp and /proc/net/tcp6 are
// read instead.
TcpTable readTcpTable(uint32_t uid);

// The two ways of reading, apart, so that they can be compared.
std::optional<TcpTable> readTcpTableFromNetlink(uint32_t uid);
TcpTable readTcpTableFromProcFiles(uint32_t uid);

// Drops the established sockets whose local port no socket of the table listens on: they can never
// count as inbound, and a smaller table lets the walk over the processes' fds end sooner.
void dropUncountableConnections(TcpTable& table);

// Adds the matching rows of a /proc/net/tcp or /proc/net/tcp6 text.
void addProcNetTcpRows(std::string_view text, uint32_t uid, TcpTable& table);

}  // namespace corvane::platform::linux_proc
