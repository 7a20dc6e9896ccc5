// Coding-agent sessions: how an agent process is recognised, and the row of each session.
#include "detect/agents.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>

#include "detect/classifiers.h"
#include "detect/pipeline.h"
#include "detect/tables.h"
#include "detect/text.h"
#include "snapshot/proc.h"

namespace corvane {

namespace {

std::string_view withoutExtension(std::string_view name) {
  for (const std::string_view extension : {".exe", ".js"})
    if (name.size() > extension.size() && name.ends_with(extension))
      return name.substr(0, name.size() - extension.size());
  return name;
}

// The agent a program's name says, trusting a common name only where `path` lies in the agent's package.
std::optional<std::string_view> byName(std::string_view name, std::string_view path) {
  const std::string_view key = withoutExtension(name);
  const auto display = lookup(agentNames, key);
  if (!display) return std::nullopt;
  if (const auto folder = lookup(commonAgentNames, key); folder && !contains(path, *folder)) return std::nullopt;
  return display;
}

}  // namespace

std::optional<std::string_view> runtimeScript(const Proc& proc) {
  if (proc.name != "node" && proc.name != "bun") return std::nullopt;
  for (size_t i = 1; i < proc.args.size(); ++i)
    if (!proc.args[i].starts_with("-")) return proc.args[i];
  return std::nullopt;
}

std::optional<std::string_view> agentDisplayName(const Proc& proc) {
  // Agents shipped as scripts run under a JavaScript runtime; the script tells which, whatever its name.
  if (const auto script = runtimeScript(proc)) {
    if (contains(*script, "/cursor-agent/")) return "Cursor Agent";
    return lookup(agentNames, withoutExtension(lastPathComponent(*script)));
  }
  if (auto name = byName(proc.name, proc.path)) return name;
  if (!proc.args.empty())
    if (auto name = byName(lastPathComponent(proc.args[0]), proc.path)) return name;
  // Claude Code's native installs keep each version in a folder of its own, named for the version.
  if (contains(proc.path, "/claude/versions/")) return "Claude Code";
  if (proc.name.starts_with("codex-")) return "Codex";
  return std::nullopt;
}

bool runsApart(const Proc& agent) {
  return std::find(agent.args.begin(), agent.args.end(), "--managed-daemon") != agent.args.end();
}

int32_t Detection::sessionOf(const Proc& agent) const {
  const auto parentOf = [this](const Proc& p) { return proc(p.ppid); };
  return sessionRoot(agent, parentOf, all.size()).pid;
}

std::vector<int32_t> reserveAgents(Detection& d) {
  std::vector<int32_t> reserved;
  for (const Proc* p : d.all)
    if (!d.isClaimed(p->pid) && agentDisplayName(*p)) reserved.push_back(p->pid);
  d.claimed.insert(reserved.begin(), reserved.end());
  return reserved;
}

void addAgents(Detection& d, const std::vector<int32_t>& reserved) {
  // A session's inner agents go to the row of its outermost process (an agent, so reserved too), with
  // whatever they started that has no row of its own. Agents whose ppids make a cycle are each their own.
  std::unordered_map<int32_t, std::vector<int32_t>> members;
  std::vector<int32_t> heads;
  for (const int32_t pid : reserved) {
    const int32_t root = d.sessionOf(*d.proc(pid));
    if (root == pid || d.sessionOf(*d.proc(root)) != root) {
      heads.push_back(pid);
    } else {
      members[root].push_back(pid);
    }
  }
  for (const int32_t pid : heads) {
    d.claimed.erase(pid);
    for (const int32_t member : members[pid]) d.claimed.erase(member);
    const Proc& p = *d.proc(pid);
    const std::string title(agentDisplayName(p).value_or(""));
    d.add(Item::Kind::agent, "agent:" + std::to_string(pid), "agent:" + p.cwd, title, pid, p.cwd, Stop::signal(),
          Detection::Guard::guarded);
  }
}

}  // namespace corvane
