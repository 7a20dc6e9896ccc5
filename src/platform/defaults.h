#pragma once
// The desktop app's user-defaults suite, shared with it: the pins the user set there and the record of
// tools that could not be found. Only what corvane stores there is modelled: dictionaries whose values
// are strings or dates; any other stored value is kept as "something else" so a reader can reject it.
#include <map>
#include <optional>
#include <string>
#include <variant>

#include "base/date.h"

namespace corvane::platform {

// std::monostate stands for a value of any other type (a number, an array, a nested dictionary...).
using DefaultsValue = std::variant<std::monostate, std::string, Date>;
using DefaultsDictionary = std::map<std::string, DefaultsValue>;

// One defaults suite. On Linux a suite is a property-list file; tests name their own file.
class DefaultsStore {
 public:
  explicit DefaultsStore(std::string file) : file_(std::move(file)) {}

  // The desktop app's suite ($XDG_CONFIG_HOME/SUITE.plist on Linux), resolved at each call.
  static DefaultsStore appSuite();

  const std::string& file() const { return file_; }

  // The dictionary stored under `key`; absent when the suite can't be read, the key is missing or
  // its value is not a dictionary.
  std::optional<DefaultsDictionary> readDictionary(const std::string& key) const;

  // Stores `dictionary` under `key`, keeping every other key of the suite. Values must be strings
  // or dates; others are left out. False when the suite could not be written, or when it exists but
  // can't be read (it is never overwritten then, so no key of the desktop app is lost).
  bool writeDictionary(const std::string& key, const DefaultsDictionary& dictionary) const;

 private:
  std::string file_;
};

// Waits for a write in progress and refuses every later one, so that the program can end while a
// background thread is still discovering tools without leaving a half-written suite behind.
void closeDefaults();

}  // namespace corvane::platform
