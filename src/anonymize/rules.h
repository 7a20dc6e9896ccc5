#pragma once
// The rules that rewrite one path component, one path, one word and one argument. They share the
// state of one anonymization: the names hashed so far, and whether the next word is a secret.
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace corvane {

struct TransparentStringHash {
  using is_transparent = void;
  size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

using NameSet = std::unordered_set<std::string, TransparentStringHash, std::equal_to<>>;

// Lives for one call of the anonymizer, never longer: names learned from one snapshot must not leak
// into the next one.
struct RewriteState {
  std::string_view home;  // without a trailing "/"; empty means "no home to replace"
  std::string_view salt;
  NameSet privateNames;   // names hashed as folders or files, hashed again wherever they occur alone
  bool secretNext = false;
};

// A private component becomes its hash (keeping a short extension of letters, "notes.txt" →
// "1a2b3c4d.txt") and is remembered; public, hidden, numeric and UUID components stay.
std::string rewriteComponent(RewriteState& state, std::string_view component);

// The home directory becomes "~"; public locations stay whole; every other component goes through
// rewriteComponent, except what follows a "node_modules" and, with `LastComponent::kept`, a last component
// that is not (yet) known to be private (an executable's name).
enum class LastComponent { rewritten, kept };
std::string rewritePath(RewriteState& state, std::string_view path, LastComponent last);

// One word of an argument: paths, user@host, the word after a secret-announcing one, token-like words
// and private names are hashed.
std::string rewriteWord(RewriteState& state, std::string_view word);

// A path argument goes through rewritePath; any other is rewritten word by word with its separators
// kept in place.
std::string rewriteArgument(RewriteState& state, std::string_view argument);

}  // namespace corvane
