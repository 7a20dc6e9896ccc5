#include <cstdlib>
#include <string>
#include <vector>

#include "cli/commands.h"

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  std::exit(corvane::runMain(arguments));
}
