#pragma once
// Turns a process snapshot into one that can be shared: the home directory becomes "~", private
// folder and file names become salted hashes, secrets in command lines are hidden, and what is public
// (system paths, tool names, well-known folders, UUIDs, versions) stays readable. The same name gives the
// same hash under one salt, so the shape of the process tree survives.
//
// The program stores no salt: a fresh random one per shared report keeps reports unlinkable, a fixed one
// keeps them comparable. No command calls this; it is here so that a report can be made from code.
#include <string>
#include <string_view>

#include "snapshot/proc.h"

namespace corvane {

class Anonymizer {
 public:
  // `home` is the user's home directory; a trailing "/" is ignored.
  Anonymizer(std::string home, std::string salt);

  // Same moment and processes in the same order, with path, name, cwd and args rewritten. A name that is
  // private anywhere in the snapshot is hashed everywhere, wherever it occurs first.
  Snapshot anonymize(const Snapshot& snapshot) const;
  // One path on its own: nothing is known to be private yet, so its last component is kept unless an
  // earlier component of the same path made it private.
  std::string anonymize(std::string_view path) const;
  // The 8 hexadecimal digits that stand for `name` under this salt.
  std::string hash(std::string_view name) const;

 private:
  std::string home_;
  std::string salt_;
};

}  // namespace corvane
