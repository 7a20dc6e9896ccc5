#pragma once
// Whether an executable is a desktop application, and the name it goes by. An application is never a
// dev server, a launch chain stops at it, and it names who started what runs under it.
#include <optional>
#include <string_view>

namespace corvane {

// The display name of the application `path` belongs to; absent for anything else. On macOS that is
// a path inside an application bundle (not one of the in-app toolchains), named by its bundle, which
// can be empty when the bundle folder has no name; on Linux a known install location. A name taken
// from the bundle is a view into `path`.
std::optional<std::string_view> appName(std::string_view path);

inline bool isAppPath(std::string_view path) { return appName(path).has_value(); }

}  // namespace corvane
