// Tunnels and port forwards.
#include <algorithm>
#include <string>

#include "detect/classifiers.h"
#include "detect/text.h"

namespace corvane {

namespace {

std::optional<std::string> tunnelTitle(const Proc& p) {
  if (p.name == "ngrok" || p.name == "cloudflared") return p.name;
  if (p.name != "kubectl") return std::nullopt;
  const auto verb = std::find(p.args.begin(), p.args.end(), "port-forward");
  if (verb == p.args.end()) return std::nullopt;
  // The verb, the resource and the ports; flags after them would only clutter the title.
  std::string title = "kubectl";
  const auto end = p.args.end() - verb > 3 ? verb + 3 : p.args.end();
  for (auto arg = verb; arg != end; ++arg) title += " " + *arg;
  return title;
}

}  // namespace

void addTunnels(Detection& d) {
  std::string joined;
  for (const Proc* p : d.all) {
    if (d.isClaimed(p->pid)) continue;
    auto title = tunnelTitle(*p);
    if (!title) continue;
    // Keyed by the whole command line: the same forward restarted is the same row.
    d.add(Item::Kind::tunnel, "tunnel:" + std::to_string(p->pid), "tunnel:" + joinArgs(p->args, joined),
          std::move(*title), p->pid, p->cwd, Stop::signal(), Detection::Guard::none);
  }
}

}  // namespace corvane
