#include "anonymize/anonymizer.h"

#include <utility>

#include "anonymize/hash.h"
#include "anonymize/rules.h"

namespace corvane {
namespace {

Proc rewriteProc(RewriteState& state, const Proc& proc) {
  Proc result = proc;
  result.path = rewritePath(state, proc.path, LastComponent::kept);
  result.name = lastPathComponent(result.path);
  result.cwd = rewritePath(state, proc.cwd, LastComponent::rewritten);
  // A secret announced at the end of one command line says nothing about the next one.
  state.secretNext = false;
  for (auto& argument : result.args) argument = rewriteArgument(state, argument);
  return result;
}

}  // namespace

Anonymizer::Anonymizer(std::string home, std::string salt) : home_(std::move(home)), salt_(std::move(salt)) {
  while (!home_.empty() && home_.back() == '/') home_.pop_back();
}

Snapshot Anonymizer::anonymize(const Snapshot& snapshot) const {
  RewriteState state{home_, salt_, {}, false};
  // The first pass only learns the private names, so that the second hashes an executable named like a
  // project folder even when the folder shows up later in the snapshot.
  for (const Proc& proc : snapshot.procs) rewriteProc(state, proc);

  Snapshot result;
  result.taken = snapshot.taken;
  result.procs.reserve(snapshot.procs.size());
  for (const Proc& proc : snapshot.procs) result.procs.push_back(rewriteProc(state, proc));
  return result;
}

std::string Anonymizer::anonymize(std::string_view path) const {
  RewriteState state{home_, salt_, {}, false};
  return rewritePath(state, path, LastComponent::kept);
}

std::string Anonymizer::hash(std::string_view name) const { return saltedHash(salt_, name); }

}  // namespace corvane
