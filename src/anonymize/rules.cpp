#include "anonymize/rules.h"

#include <algorithm>
#include <vector>

#include "anonymize/characters.h"
#include "anonymize/hash.h"
#include "anonymize/tables.h"
#include "base/uuid_shape.h"
#include "snapshot/unicode.h"

namespace corvane {
namespace {

// A short extension of letters only ("txt", "js"); anything else ("b1", "", "markdownx") is part of the name.
std::string_view extensionOf(std::string_view component) {
  const auto dot = component.rfind('.');
  if (dot == std::string_view::npos) return {};
  const std::string_view extension = component.substr(dot + 1);
  if (extension.empty() || characterCount(extension) >= 9 || !isLettersOnly(extension)) return {};
  return extension;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  size_t start = 0;
  while (true) {
    const auto end = text.find(separator, start);
    if (end == std::string_view::npos) {
      parts.push_back(text.substr(start));
      return parts;
    }
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
}

bool announcesSecret(std::string_view word) {
  const std::string lower = lowercasedText(word);
  return std::any_of(secretWords.begin(), secretWords.end(),
                     [&](std::string_view secret) { return lower.find(secret) != std::string::npos; });
}

bool looksLikeToken(std::string_view word) {
  return characterCount(word) >= 20 && containsDigit(word) && containsLetter(word);
}

std::string rewriteAddress(RewriteState& state, std::string_view word) {
  const std::vector<std::string_view> parts = split(word, '@');
  std::string result;
  for (size_t i = 0; i + 1 < parts.size(); ++i) result += saltedHash(state.salt, parts[i]) + "@";
  const std::string_view host = parts.back();
  const bool local = std::find(localHosts.begin(), localHosts.end(), host) != localHosts.end();
  result += local ? std::string(host) : saltedHash(state.salt, host);
  return result;
}

}  // namespace

std::string rewriteComponent(RewriteState& state, std::string_view component) {
  if (component.empty() || component.front() == '.' || component == "~") return std::string(component);
  if (isPublicName(component) || !containsLetter(component) || isUUIDShape(component)) return std::string(component);
  const std::string_view extension = extensionOf(component);
  const std::string_view base =
      extension.empty() ? component : component.substr(0, component.size() - extension.size() - 1);
  state.privateNames.emplace(component);
  state.privateNames.emplace(base);
  std::string result = saltedHash(state.salt, base);
  if (!extension.empty()) result.append(".").append(extension);
  return result;
}

std::string rewritePath(RewriteState& state, std::string_view path, LastComponent lastComponent) {
  const std::string_view home = state.home;
  const bool underHome =
      !home.empty() && path.starts_with(home) && (path.size() == home.size() || path[home.size()] == '/');
  const std::string text = underHome ? std::string("~").append(path.substr(home.size())) : std::string(path);
  for (const std::string_view prefix : publicPrefixes)
    if (text.starts_with(prefix)) return text;

  const std::vector<std::string_view> components = split(text, '/');
  std::string result;
  bool insidePackages = false;
  for (size_t i = 0; i < components.size(); ++i) {
    const std::string_view component = components[i];
    if (i > 0) result += '/';
    const bool last = i + 1 == components.size();
    if (insidePackages || (last && lastComponent == LastComponent::kept && !state.privateNames.contains(component)))
      result += component;
    else
      result += rewriteComponent(state, component);
    if (component == "node_modules") insidePackages = true;
  }
  return result;
}

std::string rewriteWord(RewriteState& state, std::string_view word) {
  if (word.empty()) return {};
  if (word.find('/') != std::string_view::npos) return rewritePath(state, word, LastComponent::rewritten);
  if (word.find('@') != std::string_view::npos) return rewriteAddress(state, word);
  if (state.secretNext) {
    state.secretNext = false;
    return saltedHash(state.salt, word);
  }
  if (announcesSecret(word)) state.secretNext = true;
  if (looksLikeToken(word) || state.privateNames.contains(word)) return saltedHash(state.salt, word);
  return std::string(word);
}

std::string rewriteArgument(RewriteState& state, std::string_view argument) {
  if (argument.starts_with('/') || argument.starts_with('~'))
    return rewritePath(state, argument, LastComponent::rewritten);
  std::string result;
  size_t start = 0;
  size_t at = 0;
  for (const std::string_view character : characters(argument)) {
    at += character.size();
    if (!isWordSeparator(character)) continue;
    const size_t separatorStart = at - character.size();
    result += rewriteWord(state, argument.substr(start, separatorStart - start));
    result += character;
    start = at;
  }
  result += rewriteWord(state, argument.substr(start));
  return result;
}

}  // namespace corvane
