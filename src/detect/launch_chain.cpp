// Who started a process: the climb to the top of its launch chain, and the agent or application above it.
#include <algorithm>

#include "detect/app_path.h"
#include "detect/classifiers.h"
#include "detect/detection.h"
#include "detect/pipeline.h"
#include "detect/tables.h"
#include "detect/text.h"

namespace corvane {

namespace {

bool runsCommandLine(const Proc& shell) {
  return std::find(shell.args.begin(), shell.args.end(), "-c") != shell.args.end();
}

}  // namespace

int32_t Detection::launchRoot(const Proc& proc) const {
  const Proc* current = &proc;
  // A chain is never longer than the table; a ppid cycle would otherwise be climbed forever.
  for (size_t steps = 0; steps < all.size(); ++steps) {
    const Proc* parent = this->proc(current->ppid);
    if (!parent || parent == current || parent == &proc) break;
    if (parent->pid < 2 || parent->cwd != proc.cwd || isClaimed(parent->pid)) break;
    if (agentDisplayName(*parent) || isAppPath(parent->path)) break;
    if (contains(terminalTools, parent->name)) break;
    // A shell running a command line is part of the job; an interactive one is where the user typed it.
    if (contains(shells, parent->name) && !runsCommandLine(*parent)) break;
    current = parent;
  }
  return current->pid;
}

Launcher Detection::launcher(int32_t pid) {
  const Proc* start = proc(pid);
  if (!start) return {};
  std::vector<int32_t> walked;
  Ancestor found;
  for (int32_t p = start->ppid;;) {
    const Proc* a = proc(p);
    if (!a) break;
    if (const auto known = ancestors_.find(p); known != ancestors_.end()) {
      if (!known->second.visiting) found = known->second;
      break;
    }
    if (const auto agent = agentDisplayName(*a)) {
      found = {*agent, sessionOf(*a)};
      // The next walk that meets this agent is answered without climbing its session again.
      ancestors_[p] = found;
      break;
    }
    // An application whose bundle has no name is passed over.
    if (const auto app = appName(a->path); app && !app->empty()) {
      found = {*app, std::nullopt};
      break;
    }
    ancestors_[p] = {{}, std::nullopt, true};
    walked.push_back(p);
    p = a->ppid;
  }
  for (const int32_t p : walked) ancestors_[p] = found;
  if (found.name.empty()) return {};
  return {std::string(found.name), found.pid};
}

}  // namespace corvane
