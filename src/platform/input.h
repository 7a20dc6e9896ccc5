#pragma once
// Standard input, one line at a time, for the MCP server. A client may hand it over non-blocking: the
// reader sleeps until there is something to read rather than taking "nothing yet" for its end.
#include <optional>
#include <string>

namespace corvane::platform {

class InputLines {
 public:
  // The next line without its newline (a last line may lack one); absent at the end of input.
  std::optional<std::string> next();

 private:
  bool fill();  // reads what arrives next; false at the end of input

  std::string buffered_;
  bool ended_ = false;
};

}  // namespace corvane::platform
