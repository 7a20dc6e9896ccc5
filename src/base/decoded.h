#pragma once
// The result of decoding a record from JSON: the value, or a sentence saying what was wrong.
#include <optional>
#include <string>
#include <utility>

namespace corvane {

template <class T>
struct Decoded {
  std::optional<T> value;
  std::string error;

  static Decoded success(T v) { return Decoded{std::move(v), {}}; }
  static Decoded failure(std::string message) { return Decoded{std::nullopt, std::move(message)}; }
  explicit operator bool() const { return value.has_value(); }
};

}  // namespace corvane
