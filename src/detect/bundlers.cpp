// Mobile bundlers: Metro, Expo and flutter's tool, each with the package manager that started it.
#include <string>

#include "detect/classifiers.h"
#include "detect/text.h"

namespace corvane {

namespace {

std::optional<std::string> bundlerName(const Proc& p, std::string& joined) {
  if (p.name != "node" && p.name != "bun" && !p.name.starts_with("dart")) return std::nullopt;
  for (size_t i = 0; i < p.args.size(); ++i) {
    if (!p.args[i].ends_with("flutter_tools.snapshot")) continue;
    // The flutter command follows the snapshot: run, attach, ...
    return "flutter " + (i + 1 < p.args.size() ? p.args[i + 1] : std::string("run"));
  }
  joinArgs(p.args, joined);
  if (contains(joined, "react-native start") || contains(joined, "react-native/cli.js start")) return "Metro";
  if (contains(joined, "expo start") || contains(joined, "expo/bin/cli start")) return "Expo";
  return std::nullopt;
}

}  // namespace

void addBundlers(Detection& d) {
  std::string joined;
  for (const Proc* p : d.all) {
    if (d.isClaimed(p->pid)) continue;
    const auto name = bundlerName(*p, joined);
    if (!name) continue;
    const int32_t root = d.launchRoot(*p);
    d.add(Item::Kind::bundler, "bundler:" + std::to_string(root), "bundler:" + p->cwd + ":" + *name, *name, root,
          p->cwd, Stop::signal(), Detection::Guard::none);
  }
}

}  // namespace corvane
