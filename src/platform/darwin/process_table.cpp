// The process table through libproc and sysctl. Every proc_pidinfo and proc_pidfdinfo answer counts
// only when it has exactly the size of the record asked for: anything shorter is a process that went
// away or one this user may not read.
#include "platform/process_table.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <libproc.h>
#include <mach/kern_return.h>
#include <mach/mach_time.h>
#include <sys/proc.h>
#include <sys/proc_info.h>
#include <sys/resource.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include "platform/darwin/procargs.h"

// In the system library but in no public header.
extern "C" pid_t responsibility_get_pid_responsible_for_pid(pid_t pid);

namespace corvane::platform {

namespace {

static_assert(sizeof(proc_bsdinfo) == 136);
static_assert(sizeof(proc_vnodepathinfo) == 2352);
static_assert(sizeof(proc_fdinfo) == 8);
static_assert(sizeof(socket_fdinfo) == 792);

constexpr int bsdInfoSize = sizeof(proc_bsdinfo);
constexpr int vnodePathInfoSize = sizeof(proc_vnodepathinfo);
constexpr int socketInfoSize = sizeof(socket_fdinfo);
constexpr uint32_t pathBufferSize = 4096;

// CPU times come in Mach absolute time units; the timebase turns them into nanoseconds.
struct Timebase {
  uint64_t numer = 1;
  uint64_t denom = 1;
};

const Timebase& timebase() {
  static const Timebase value = [] {
    Timebase timebase;
    mach_timebase_info_data_t info{};
    if (mach_timebase_info(&info) == KERN_SUCCESS && info.denom != 0) {
      timebase.numer = info.numer;
      timebase.denom = info.denom;
    }
    return timebase;
  }();
  return value;
}

// The largest argument area a process can have; 0 when it can't be read.
size_t argumentAreaSize() {
  static const size_t value = [] {
    int name[] = {CTL_KERN, KERN_ARGMAX};
    int32_t argmax = 0;
    size_t length = sizeof argmax;
    if (sysctl(name, 2, &argmax, &length, nullptr, 0) != 0 || argmax < 0) return size_t{0};
    return static_cast<size_t>(argmax);
  }();
  return value;
}

std::optional<proc_bsdinfo> bsdInfo(int32_t pid) {
  proc_bsdinfo info{};
  if (proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &info, bsdInfoSize) != bsdInfoSize) return std::nullopt;
  return info;
}

// The text of a fixed-size field up to its first zero byte, or all of it when there is none.
std::string textUpToZero(const char* bytes, size_t size) {
  size_t length = 0;
  while (length < size && bytes[length] != '\0') ++length;
  return std::string(bytes, length);
}

Date startOf(const proc_bsdinfo& info) {
  return Date(std::chrono::microseconds(static_cast<int64_t>(info.pbi_start_tvsec) * 1'000'000 +
                                        static_cast<int64_t>(info.pbi_start_tvusec)));
}

std::optional<std::string> pidPath(int32_t pid) {
  char buffer[pathBufferSize] = {};
  if (proc_pidpath(pid, buffer, pathBufferSize) <= 0) return std::nullopt;
  return textUpToZero(buffer, sizeof buffer);
}

}  // namespace

struct ProcessTable::State {
  uint32_t uid = 0;
  std::vector<char> argumentArea;
  std::vector<proc_fdinfo> descriptors;
};

ProcessTable::ProcessTable() : state_(std::make_unique<State>()) { state_->uid = currentUser(); }

ProcessTable::~ProcessTable() = default;

std::vector<int32_t> ProcessTable::pids() {
  // Room for processes started between the two calls.
  const int counted = proc_listallpids(nullptr, 0);
  std::vector<int32_t> pids(static_cast<size_t>(counted > 0 ? counted : 0) + 64, 0);
  const int listed = proc_listallpids(pids.data(), static_cast<int>(pids.size() * sizeof(int32_t)));
  pids.resize(listed > 0 ? std::min(static_cast<size_t>(listed), pids.size()) : 0);
  return pids;
}

namespace {

// The largest argument area is allocated once a pass and reused: only the bytes sysctl returns are
// looked at, so it never needs clearing.
std::vector<std::string> argsOf(int32_t pid, std::vector<char>& area) {
  const size_t areaSize = argumentAreaSize();
  if (areaSize == 0) return {};
  if (area.size() != areaSize) area.assign(areaSize, 0);
  int name[] = {CTL_KERN, KERN_PROCARGS2, pid};
  size_t length = area.size();
  if (sysctl(name, 3, area.data(), &length, nullptr, 0) != 0) return {};
  return darwin_proc::parseProcArgs(std::string_view(area.data(), std::min(length, areaSize)));
}

std::optional<int32_t> responsibleFor(int32_t pid) {
  const pid_t responsible = responsibility_get_pid_responsible_for_pid(pid);
  if (responsible < 1 || responsible == pid) return std::nullopt;
  return static_cast<int32_t>(responsible);
}

std::optional<std::string> workingDirectoryOf(int32_t pid) {
  proc_vnodepathinfo info{};
  if (proc_pidinfo(pid, PROC_PIDVNODEPATHINFO, 0, &info, vnodePathInfoSize) != vnodePathInfoSize) return std::nullopt;
  return textUpToZero(info.pvi_cdir.vip_path, sizeof info.pvi_cdir.vip_path);
}

// Every listening TCP socket of the process and every established one, IPv4 and IPv6 alike. The
// caller counts an established socket only when its port is one the process listens on, which is
// what tells an accepted connection from one the process opened itself.
std::vector<TcpSocket> tcpSocketsOf(int32_t pid, std::vector<proc_fdinfo>& descriptors) {
  std::vector<TcpSocket> found;
  const int needed = proc_pidinfo(pid, PROC_PIDLISTFDS, 0, nullptr, 0);
  if (needed < 1) return found;
  descriptors.assign(static_cast<size_t>(needed) / sizeof(proc_fdinfo), proc_fdinfo{});
  const int bufferSize = static_cast<int>(descriptors.size() * sizeof(proc_fdinfo));
  const int listed = proc_pidinfo(pid, PROC_PIDLISTFDS, 0, descriptors.data(), bufferSize);
  if (listed < 1) return found;
  const size_t count = std::min(static_cast<size_t>(listed) / sizeof(proc_fdinfo), descriptors.size());
  for (size_t i = 0; i < count; ++i) {
    if (descriptors[i].proc_fdtype != PROX_FDTYPE_SOCKET) continue;
    socket_fdinfo socket{};
    if (proc_pidfdinfo(pid, descriptors[i].proc_fd, PROC_PIDFDSOCKETINFO, &socket, socketInfoSize) != socketInfoSize)
      continue;
    if (socket.psi.soi_kind != SOCKINFO_TCP) continue;
    const tcp_sockinfo& tcp = socket.psi.soi_proto.pri_tcp;
    const auto port = static_cast<uint16_t>(ntohs(static_cast<uint16_t>(tcp.tcpsi_ini.insi_lport)));
    if (tcp.tcpsi_state == TSI_S_LISTEN) {
      found.push_back(TcpSocket{port, true});
    } else if (tcp.tcpsi_state == TSI_S_ESTABLISHED) {
      found.push_back(TcpSocket{port, false});
    }
  }
  return found;
}

}  // namespace

std::optional<ProcessRecord> ProcessTable::read(int32_t pid, const ProcessReading& reading) {
  State& s = *state_;
  const auto info = bsdInfo(pid);
  if (!info || info->pbi_uid != s.uid) return std::nullopt;
  ProcessRecord record;
  record.ppid = static_cast<int32_t>(info->pbi_ppid);
  record.started = startOf(*info);
  rusage_info_v4 usage{};
  if (proc_pid_rusage(pid, RUSAGE_INFO_V4, reinterpret_cast<rusage_info_t*>(&usage)) == 0) {
    const Timebase& t = timebase();
    record.cpuTimeNanoseconds = (usage.ri_user_time + usage.ri_system_time) * t.numer / t.denom;
    record.footprint = usage.ri_phys_footprint;
  }
  const std::vector<std::string>* args = reading.knownArgs(record.started);
  if (!args) {
    record.args = argsOf(pid, s.argumentArea);
    args = &*record.args;
  }
  record.executable = pidPath(pid);
  record.workingDirectory = workingDirectoryOf(pid);
  record.responsible = responsibleFor(pid);
  const std::string_view path = record.executable ? std::string_view(*record.executable)
                                : args->empty()     ? std::string_view()
                                                    : std::string_view(args->front());
  if (reading.wantsSockets(path)) record.sockets = tcpSocketsOf(pid, s.descriptors);
  return record;
}

std::optional<Date> processStarted(int32_t pid) {
  if (pid < 1) return std::nullopt;
  const auto info = bsdInfo(pid);
  if (!info) return std::nullopt;
  return startOf(*info);
}

bool processGone(int32_t pid) {
  if (pid < 1) return true;
  const auto info = bsdInfo(pid);
  return !info || info->pbi_status == SZOMB;
}

ProcessCheck checkProcess(const ScannedProcess& process) {
  using State = ProcessCheck::State;
  if (process.pid < 1) return {State::gone};
  proc_bsdinfo info{};
  errno = 0;
  const int size = proc_pidinfo(process.pid, PROC_PIDTBSDINFO, 0, &info, bsdInfoSize);
  // ESRCH is the one answer that means there is no such process.
  if (size <= 0 && errno == ESRCH) return {State::gone};
  if (size != bsdInfoSize) return {State::unknown, errno != 0 ? errno : EIO};
  if (info.pbi_status == SZOMB || startOf(info) != process.started) return {State::gone};
  return {State::running};
}

// The user of a process is the one its BSD record names, the same reading the snapshot filters on.
std::optional<ProcessOwner> processOwner(int32_t pid) {
  if (pid < 1) return std::nullopt;
  const auto info = bsdInfo(pid);
  if (!info) return std::nullopt;
  return ProcessOwner{info->pbi_uid, pidPath(pid)};
}

}  // namespace corvane::platform
