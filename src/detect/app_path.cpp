#include "detect/app_path.h"

#include <algorithm>

#include "detect/tables.h"
#include "detect/text.h"
#include "snapshot/proc.h"

namespace corvane {

namespace {

// The bundle an app path lies in: the last folder name before the first ".app/".
std::string_view bundleName(std::string_view path) {
  std::string_view before = path.substr(0, path.find(".app/"));
  while (!before.empty() && before.back() == '/') before.remove_suffix(1);
  return lastPathComponent(before);
}

bool matchesInstall(std::string_view path, std::string_view fragment) {
  return fragment.ends_with('/') ? contains(path, fragment) : path.ends_with(fragment);
}

}  // namespace

std::optional<std::string_view> appName(std::string_view path) {
  if (contains(path, ".app/Contents/")) {
    if (std::any_of(inAppToolchains.begin(), inAppToolchains.end(),
                    [&](std::string_view fragment) { return contains(path, fragment); }))
      return std::nullopt;
    const std::string_view bundle = bundleName(path);
    return lookup(appNames, bundle).value_or(bundle);
  }
  for (const auto& [fragment, name] : linuxApps)
    if (matchesInstall(path, fragment)) return name;
  return std::nullopt;
}

}  // namespace corvane
