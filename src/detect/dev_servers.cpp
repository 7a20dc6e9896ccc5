// Dev servers of any framework: a process of a project that listens on a port, with what launched it.
#include <algorithm>
#include <array>
#include <cctype>
#include <string>

#include "detect/app_path.h"
#include "detect/classifiers.h"
#include "detect/pipeline.h"
#include "detect/tables.h"
#include "detect/text.h"
#include "platform/paths.h"
#include "snapshot/proc.h"

namespace corvane {

namespace {

constexpr std::array<NamePair, 6> runtimeNames = {{
    {"node", "Node"}, {"bun", "Bun"}, {"deno", "Deno"}, {"ruby", "Ruby"}, {"java", "Java"}, {"php", "PHP"},
}};

bool isDevServer(const Proc& p) {
  if (p.listening.empty() || isAppPath(p.path)) return false;
  if (p.cwd.empty() || p.cwd == "/") return false;
  return !platform::isSystemProgram(p.path);
}

void lowercase(std::string_view text, std::string& into) {
  into.assign(text);
  for (char& c : into) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

std::string serverName(const Detection& d, const std::vector<int32_t>& pids, const Proc& listener) {
  size_t best = serverNames.size();
  std::string word;
  for (const int32_t pid : pids) {
    const Proc* p = d.proc(pid);
    if (!p) continue;
    for (const auto& arg : p->args) {
      lowercase(lastPathComponent(arg), word);
      // Next.js retitles its server process "next-server (vX.Y.Z)".
      if (word.starts_with("next-server")) return "Next.js";
      for (size_t i = 0; i < best; ++i)
        if (serverNames[i].first == word) best = i;
    }
  }
  if (best < serverNames.size()) return std::string(serverNames[best].second);
  lowercase(listener.name, word);
  if (word.starts_with("python")) return "Python";
  return std::string(lookup(runtimeNames, listener.name).value_or(listener.name));
}

}  // namespace

void addDevServers(Detection& d) {
  for (const Proc* p : d.all) {
    if (d.isClaimed(p->pid) || !isDevServer(*p)) continue;
    const int32_t root = d.launchRoot(*p);
    std::vector<int32_t> tree = d.unclaimedDescendants(root);
    tree.insert(tree.begin(), root);
    const std::string name = serverName(d, tree, *p);
    d.add(Item::Kind::server, "server:" + std::to_string(root), "server:" + p->cwd + ":" + name, name, root, p->cwd,
          Stop::signal(), Detection::Guard::none);
  }
}

}  // namespace corvane
