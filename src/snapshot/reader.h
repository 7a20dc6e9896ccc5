#pragma once
// Reads the user's process table into a Snapshot.
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "snapshot/proc.h"

namespace corvane {

struct CachedArgs {
  Date started;
  std::vector<std::string> args;
};

// Arguments by pid, valid only for the process with exactly that start time. The caller owns it;
// after a snapshot it holds exactly the processes of that snapshot.
using ArgsCache = std::unordered_map<int32_t, CachedArgs>;

Snapshot snapshot(ArgsCache& argsCache);

// The user's processes above `pid`, its parent first, as a snapshot would read them but without their
// sockets; the chain ends below the first that is not the user's or cannot be read.
std::vector<Proc> ancestors(int32_t pid);

}  // namespace corvane
