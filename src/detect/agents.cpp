// Coding-agent sessions: how an agent process is recognised, and its row.
#include <string>

#include "detect/classifiers.h"
#include "detect/pipeline.h"
#include "detect/tables.h"
#include "detect/text.h"

namespace corvane {

std::optional<std::string_view> agentDisplayName(const Proc& proc) {
  if (auto name = lookup(agentNames, proc.name)) return name;
  if (!proc.args.empty())
    if (auto name = lookup(agentNames, lastComponent(proc.args[0]))) return name;
  // Claude Code's native installs keep each version in a folder of its own, named for the version.
  if (contains(proc.path, "/claude/versions/")) return "Claude Code";
  if (proc.name.starts_with("codex-")) return "Codex";
  // Agents shipped as scripts run under the JavaScript runtime; the script tells which.
  if ((proc.name == "node" || proc.name == "bun") && proc.args.size() >= 2) {
    if (contains(proc.args[1], "/cursor-agent/")) return "Cursor Agent";
    return lookup(agentNames, lastComponent(proc.args[1]));
  }
  return std::nullopt;
}

std::optional<std::string> agentName(const Proc& proc) {
  if (auto name = agentDisplayName(proc)) return std::string(*name);
  return std::nullopt;
}

std::vector<int32_t> reserveAgents(Detection& d) {
  std::vector<int32_t> reserved;
  for (const Proc* p : d.all)
    if (!d.isClaimed(p->pid) && agentDisplayName(*p)) reserved.push_back(p->pid);
  d.claimed.insert(reserved.begin(), reserved.end());
  return reserved;
}

void addAgents(Detection& d, const std::vector<int32_t>& reserved) {
  for (const int32_t pid : reserved) {
    d.claimed.erase(pid);
    const Proc& p = *d.proc(pid);
    d.add(Item::Kind::agent, "agent:" + std::to_string(pid), "agent:" + p.cwd, agentName(p).value_or(""), pid,
          p.cwd, Stop::signal(), Detection::Guard::guarded);
  }
}

}  // namespace corvane
