#pragma once
// Typed, checked reads of the members of a JSON object. The first problem is kept as a sentence;
// later reads return defaults, so a decoder reads every field and then looks at `error()` once.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/date.h"

namespace corvane {

class JSONFields {
 public:
  JSONFields(const nlohmann::json& object, std::string typeName);

  bool ok() const { return error_.empty(); }
  const std::string& error() const { return error_; }
  void fail(const std::string& message);

  bool has(const char* key) const;
  const nlohmann::json* member(const char* key);  // required; null after reporting it missing

  std::string string(const char* key);
  std::optional<std::string> optionalString(const char* key);
  bool boolean(const char* key);
  int32_t int32(const char* key);
  std::optional<int32_t> optionalInt32(const char* key);
  int64_t int64(const char* key);
  uint64_t uint64(const char* key);
  double number(const char* key);
  Date date(const char* key);
  std::optional<Date> optionalDate(const char* key);
  std::vector<std::string> strings(const char* key);
  std::vector<int32_t> int32s(const char* key);
  std::vector<uint16_t> ports(const char* key);

 private:
  void wrongType(const char* key, const char* expected);

  const nlohmann::json& object_;
  std::string typeName_;
  std::string error_;
};

// Checked conversions of one JSON value; absent when the value is of another type or out of range.
// Agents' clients may write an integer as a whole floating-point number ("3.0"); stored files may not.
enum class WholeFloats { refused, accepted };
std::optional<int64_t> jsonInteger(const nlohmann::json& value, WholeFloats wholeFloats = WholeFloats::refused);
std::optional<uint64_t> jsonUnsigned(const nlohmann::json& value);

// The string at `key` of an object; null when the key is missing or holds another type.
const std::string* jsonString(const nlohmann::json& object, const char* key);

}  // namespace corvane
