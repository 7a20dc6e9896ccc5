#pragma once
// HTTP requests to a server on a Unix socket (a container engine's API), through libcurl.
#include <string>
#include <vector>

namespace corvane::platform {

struct HttpAnswer {
  enum class State {
    answered,     // `status` and `body` hold the server's reply, whatever its status
    unreachable,  // nothing accepted the connection (or libcurl is missing)
    timedOut,
    failed,       // the connection broke, or the reply was no HTTP
  };
  State state = State::failed;
  long status = 0;
  std::string body;
};

// GETs every path from the server on `socket` at once, each within `timeoutSeconds`; the answers come
// in the order of `paths`.
std::vector<HttpAnswer> getOverUnixSocket(const std::string& socket, const std::vector<std::string>& paths,
                                          double timeoutSeconds);

}  // namespace corvane::platform
