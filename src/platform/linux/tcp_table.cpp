#include "platform/linux/tcp_table.h"

#include <cerrno>
#include <charconv>
#include <string>
#include <unordered_set>
#include <vector>

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/lines.h"
#include "platform/files.h"

namespace corvane::platform::linux_proc {

namespace {

// The kernel's TCP state numbers.
constexpr uint32_t stateEstablished = 1;
constexpr uint32_t stateListen = 10;
constexpr uint32_t wantedStates = (1u << stateListen) | (1u << stateEstablished);

void add(TcpTable& table, uint64_t inode, uint16_t port, uint32_t state) {
  if (inode == 0) return;
  if (state == stateListen) table[inode] = TcpSocket{port, true};
  if (state == stateEstablished) table[inode] = TcpSocket{port, false};
}

enum class DumpProgress { more, done, failed };

DumpProgress addDiagMessages(const char* data, size_t length, uint32_t uid, TcpTable& table) {
  int remaining = static_cast<int>(length);
  // The count left falls below zero after a last message whose length isn't aligned; NLMSG_OK compares
  // it with the header's unsigned length.
  for (auto* header = reinterpret_cast<const nlmsghdr*>(data);
       remaining >= 0 && NLMSG_OK(header, static_cast<uint32_t>(remaining));
       header = NLMSG_NEXT(header, remaining)) {
    if (header->nlmsg_type == NLMSG_DONE) {
      // The kernel ends a dump that broke off with an error code in place of 0.
      const bool failed = header->nlmsg_len >= NLMSG_LENGTH(sizeof(int)) &&
                          *static_cast<const int*>(NLMSG_DATA(header)) < 0;
      return failed ? DumpProgress::failed : DumpProgress::done;
    }
    if (header->nlmsg_type == NLMSG_ERROR) return DumpProgress::failed;
    if (header->nlmsg_type != SOCK_DIAG_BY_FAMILY) continue;
    if (header->nlmsg_len < NLMSG_LENGTH(sizeof(inet_diag_msg))) continue;
    const auto* message = static_cast<const inet_diag_msg*>(NLMSG_DATA(header));
    if (message->idiag_uid != uid) continue;
    add(table, message->idiag_inode, ntohs(message->id.idiag_sport), message->idiag_state);
  }
  return DumpProgress::more;
}

class NetlinkSocket {
 public:
  NetlinkSocket() : fd_(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG)) {}
  ~NetlinkSocket() {
    if (fd_ >= 0) close(fd_);
  }
  NetlinkSocket(const NetlinkSocket&) = delete;
  NetlinkSocket& operator=(const NetlinkSocket&) = delete;
  int fd() const { return fd_; }

 private:
  int fd_;
};

bool dumpFamily(int fd, uint8_t family, uint32_t uid, std::vector<char>& buffer, TcpTable& table) {
  struct {
    nlmsghdr header;
    inet_diag_req_v2 body;
  } request{};
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.header.nlmsg_seq = family;
  request.body.sdiag_family = family;
  request.body.sdiag_protocol = IPPROTO_TCP;
  request.body.idiag_states = wantedStates;
  sockaddr_nl kernel{};
  kernel.nl_family = AF_NETLINK;
  if (sendto(fd, &request, sizeof request, 0, reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel) !=
      static_cast<ssize_t>(sizeof request))
    return false;
  while (true) {
    const ssize_t received = recv(fd, buffer.data(), buffer.size(), MSG_TRUNC);
    if (received < 0 && errno == EINTR) continue;
    if (received <= 0 || static_cast<size_t>(received) > buffer.size()) return false;
    const DumpProgress progress = addDiagMessages(buffer.data(), static_cast<size_t>(received), uid, table);
    if (progress == DumpProgress::done) return true;
    if (progress == DumpProgress::failed) return false;
  }
}


template <class Number>
std::optional<Number> hexNumber(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<TcpTable> readTcpTableFromNetlink(uint32_t uid) {
  NetlinkSocket socket;
  if (socket.fd() < 0) return std::nullopt;
  // The kernel fills a dump datagram up to 32 KiB at most.
  std::vector<char> buffer(64 * 1024);
  TcpTable table;
  for (const uint8_t family : {uint8_t{AF_INET}, uint8_t{AF_INET6}})
    if (!dumpFamily(socket.fd(), family, uid, buffer, table)) return std::nullopt;
  return table;
}

void addProcNetTcpRows(std::string_view text, uint32_t uid, TcpTable& table) {
  const std::vector<std::string_view> lines = splitLines(text);
  for (size_t i = 1; i < lines.size(); ++i) {  // past the header line
    const std::string_view line = lines[i];
    // sl local_address rem_address st tx:rx tr:when retrnsmt uid timeout inode ...
    std::string_view fields[10];
    if (splitFields(line, " ", fields) < 10) continue;
    const size_t colon = fields[1].rfind(':');
    if (colon == std::string_view::npos) continue;
    const auto port = hexNumber<uint16_t>(fields[1].substr(colon + 1));
    const auto state = hexNumber<uint32_t>(fields[3]);
    uint32_t owner = 0;
    uint64_t inode = 0;
    const auto ownerParsed = std::from_chars(fields[7].data(), fields[7].data() + fields[7].size(), owner);
    const auto inodeParsed = std::from_chars(fields[9].data(), fields[9].data() + fields[9].size(), inode);
    if (!port || !state || ownerParsed.ec != std::errc() || inodeParsed.ec != std::errc()) continue;
    if (owner != uid) continue;
    add(table, inode, *port, *state);
  }
}

void dropUncountableConnections(TcpTable& table) {
  std::unordered_set<uint16_t> listened;
  for (const auto& [inode, socket] : table)
    if (socket.listening) listened.insert(socket.port);
  std::erase_if(table, [&](const auto& entry) {
    return !entry.second.listening && !listened.contains(entry.second.port);
  });
}

TcpTable readTcpTableFromProcFiles(uint32_t uid) {
  TcpTable table;
  addProcNetTcpRows(readFile("/proc/net/tcp").value_or(std::string()), uid, table);
  addProcNetTcpRows(readFile("/proc/net/tcp6").value_or(std::string()), uid, table);
  return table;
}

TcpTable readTcpTable(uint32_t uid) {
  if (auto table = readTcpTableFromNetlink(uid)) return std::move(*table);
  return readTcpTableFromProcFiles(uid);
}

}  // namespace corvane::platform::linux_proc
