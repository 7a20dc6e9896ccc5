// Stand-in for macOS <sys/proc_info.h>: the records corvane reads, laid out as the real header lays
// them out up to the fields it uses, with the rest as padding of the real size.
#pragma once
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#define PROC_PIDLISTFDS 1
#define PROC_PIDTBSDINFO 3
#define PROC_PIDVNODEPATHINFO 9
#define PROC_PIDFDSOCKETINFO 3
#define PROX_FDTYPE_SOCKET 2
#define SOCKINFO_TCP 2
#define TSI_S_LISTEN 1
#define TSI_S_ESTABLISHED 4
#define MAXCOMLEN 16
#define MAXPATHLEN 1024

struct proc_bsdinfo {
  uint32_t pbi_flags;
  uint32_t pbi_status;
  uint32_t pbi_xstatus;
  uint32_t pbi_pid;
  uint32_t pbi_ppid;
  uid_t pbi_uid;
  gid_t pbi_gid;
  uid_t pbi_ruid;
  gid_t pbi_rgid;
  uid_t pbi_svuid;
  gid_t pbi_svgid;
  uint32_t rfu_1;
  char pbi_comm[MAXCOMLEN];
  char pbi_name[2 * MAXCOMLEN];
  uint32_t pbi_nfiles;
  uint32_t pbi_pgid;
  uint32_t pbi_pjobc;
  uint32_t e_tdev;
  uint32_t e_tpgid;
  int32_t pbi_nice;
  uint64_t pbi_start_tvsec;
  uint64_t pbi_start_tvusec;
};
static_assert(sizeof(struct proc_bsdinfo) == 136);
static_assert(offsetof(struct proc_bsdinfo, pbi_status) == 4);
static_assert(offsetof(struct proc_bsdinfo, pbi_ppid) == 16);
static_assert(offsetof(struct proc_bsdinfo, pbi_uid) == 20);
static_assert(offsetof(struct proc_bsdinfo, pbi_start_tvsec) == 120);

// vinfo_stat (136 bytes), vi_type, vi_pad and vi_fsid.
struct vnode_info {
  alignas(8) unsigned char opaque[152];
};

struct vnode_info_path {
  struct vnode_info vip_vi;
  char vip_path[MAXPATHLEN];
};

struct proc_vnodepathinfo {
  struct vnode_info_path pvi_cdir;
  struct vnode_info_path pvi_rdir;
};
static_assert(sizeof(struct proc_vnodepathinfo) == 2352);
static_assert(offsetof(struct proc_vnodepathinfo, pvi_cdir) + offsetof(struct vnode_info_path, vip_path) == 152);

struct proc_fdinfo {
  int32_t proc_fd;
  uint32_t proc_fdtype;
};
static_assert(sizeof(struct proc_fdinfo) == 8);

struct proc_fileinfo {
  uint32_t fi_openflags;
  uint32_t fi_status;
  off_t fi_offset;
  int32_t fi_type;
  uint32_t fi_guardflags;
};
static_assert(sizeof(struct proc_fileinfo) == 24);

struct in_sockinfo {
  int insi_fport;
  int insi_lport;  // network byte order in the low 16 bits
  uint64_t insi_gencnt;
  unsigned char rest[64];  // flags, flow, version, ttl, addresses, v4 and v6 options
};
static_assert(sizeof(struct in_sockinfo) == 80);

struct tcp_sockinfo {
  struct in_sockinfo tcpsi_ini;
  int tcpsi_state;
  int tcpsi_timer[4];
  int tcpsi_mss;
  uint32_t tcpsi_flags;
  uint32_t rfu_1;
  uint64_t tcpsi_tp;
};
static_assert(sizeof(struct tcp_sockinfo) == 120);
static_assert(offsetof(struct tcp_sockinfo, tcpsi_state) == 80);

struct socket_info {
  // vinfo_stat, handles, type, protocol, family, options, state, queue sizes and both socket buffers.
  alignas(8) unsigned char soi_head[232];
  int soi_kind;
  uint32_t rfu_1;
  union {
    struct in_sockinfo pri_in;
    struct tcp_sockinfo pri_tcp;
    unsigned char pri_largest[528];  // un_sockinfo: two handles and two 255-byte addresses
  } soi_proto;
};
static_assert(offsetof(struct socket_info, soi_kind) == 232);
static_assert(offsetof(struct socket_info, soi_proto) == 240);
static_assert(sizeof(struct socket_info) == 768);

struct socket_fdinfo {
  struct proc_fileinfo pfi;
  struct socket_info psi;
};
static_assert(sizeof(struct socket_fdinfo) == 792);
