#include "base/json_fields.h"

#include <cmath>
#include <limits>

namespace corvane {

using nlohmann::json;

std::optional<int64_t> jsonInteger(const json& value, WholeFloats wholeFloats) {
  if (value.is_number_unsigned()) {
    auto v = value.get<uint64_t>();
    if (v > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) return std::nullopt;
    return static_cast<int64_t>(v);
  }
  if (value.is_number_integer()) return value.get<int64_t>();
  if (wholeFloats == WholeFloats::accepted && value.is_number_float()) {
    const double d = value.get<double>();
    if (std::isfinite(d) && std::floor(d) == d && std::fabs(d) < 9.0e15) return static_cast<int64_t>(d);
  }
  return std::nullopt;
}

std::optional<uint64_t> jsonUnsigned(const json& value) {
  if (value.is_number_unsigned()) return value.get<uint64_t>();
  if (value.is_number_integer()) {
    auto v = value.get<int64_t>();
    if (v < 0) return std::nullopt;
    return static_cast<uint64_t>(v);
  }
  return std::nullopt;
}

const std::string* jsonString(const json& object, const char* key) {
  const auto it = object.find(key);
  return it != object.end() && it->is_string() ? it->get_ptr<const std::string*>() : nullptr;
}

JSONFields::JSONFields(const json& object, std::string typeName) : object_(object), typeName_(std::move(typeName)) {
  if (!object_.is_object()) error_ = typeName_ + " must be a JSON object.";
}

void JSONFields::fail(const std::string& message) {
  if (error_.empty()) error_ = message;
}

void JSONFields::wrongType(const char* key, const char* expected) {
  fail(typeName_ + ": \"" + key + "\" must be " + expected + ".");
}

bool JSONFields::has(const char* key) const {
  if (!object_.is_object()) return false;
  auto it = object_.find(key);
  return it != object_.end() && !it->is_null();
}

const json* JSONFields::member(const char* key) {
  if (!ok()) return nullptr;
  auto it = object_.find(key);
  if (it == object_.end()) {
    fail(typeName_ + ": the key \"" + std::string(key) + "\" is missing.");
    return nullptr;
  }
  return &*it;
}

std::string JSONFields::string(const char* key) {
  const json* v = member(key);
  if (!v) return {};
  if (!v->is_string()) {
    wrongType(key, "a string");
    return {};
  }
  return v->get<std::string>();
}

std::optional<std::string> JSONFields::optionalString(const char* key) {
  if (!has(key)) return std::nullopt;
  auto s = string(key);
  if (!ok()) return std::nullopt;
  return s;
}

bool JSONFields::boolean(const char* key) {
  const json* v = member(key);
  if (!v) return false;
  if (!v->is_boolean()) {
    wrongType(key, "true or false");
    return false;
  }
  return v->get<bool>();
}

int64_t JSONFields::int64(const char* key) {
  const json* v = member(key);
  if (!v) return 0;
  auto i = jsonInteger(*v);
  if (!i) {
    wrongType(key, "an integer");
    return 0;
  }
  return *i;
}

int32_t JSONFields::int32(const char* key) {
  const json* v = member(key);
  if (!v) return 0;
  auto i = jsonInteger(*v);
  if (!i || *i < std::numeric_limits<int32_t>::min() || *i > std::numeric_limits<int32_t>::max()) {
    wrongType(key, "a 32-bit integer");
    return 0;
  }
  return static_cast<int32_t>(*i);
}

std::optional<int32_t> JSONFields::optionalInt32(const char* key) {
  if (!has(key)) return std::nullopt;
  auto i = int32(key);
  if (!ok()) return std::nullopt;
  return i;
}

uint64_t JSONFields::uint64(const char* key) {
  const json* v = member(key);
  if (!v) return 0;
  auto u = jsonUnsigned(*v);
  if (!u) {
    wrongType(key, "a non-negative integer");
    return 0;
  }
  return *u;
}

double JSONFields::number(const char* key) {
  const json* v = member(key);
  if (!v) return 0;
  if (!v->is_number()) {
    wrongType(key, "a number");
    return 0;
  }
  return v->get<double>();
}

Date JSONFields::date(const char* key) {
  const json* v = member(key);
  if (!v) return {};
  std::optional<Date> d;
  if (v->is_string()) d = parseISO8601(v->get<std::string>());
  if (!d) {
    wrongType(key, "an ISO 8601 date");
    return {};
  }
  return *d;
}

std::optional<Date> JSONFields::optionalDate(const char* key) {
  if (!has(key)) return std::nullopt;
  auto d = date(key);
  if (!ok()) return std::nullopt;
  return d;
}

std::vector<std::string> JSONFields::strings(const char* key) {
  std::vector<std::string> result;
  const json* v = member(key);
  if (!v) return result;
  if (!v->is_array()) {
    wrongType(key, "an array of strings");
    return result;
  }
  for (const auto& e : *v) {
    if (!e.is_string()) {
      wrongType(key, "an array of strings");
      return {};
    }
    result.push_back(e.get<std::string>());
  }
  return result;
}

std::vector<int32_t> JSONFields::int32s(const char* key) {
  std::vector<int32_t> result;
  const json* v = member(key);
  if (!v) return result;
  if (!v->is_array()) {
    wrongType(key, "an array of 32-bit integers");
    return result;
  }
  for (const auto& e : *v) {
    auto i = jsonInteger(e);
    if (!i || *i < std::numeric_limits<int32_t>::min() || *i > std::numeric_limits<int32_t>::max()) {
      wrongType(key, "an array of 32-bit integers");
      return {};
    }
    result.push_back(static_cast<int32_t>(*i));
  }
  return result;
}

std::vector<uint16_t> JSONFields::ports(const char* key) {
  std::vector<uint16_t> result;
  const json* v = member(key);
  if (!v) return result;
  if (!v->is_array()) {
    wrongType(key, "an array of ports");
    return result;
  }
  for (const auto& e : *v) {
    auto u = jsonUnsigned(e);
    if (!u || *u > 65535) {
      wrongType(key, "an array of ports (0 to 65535)");
      return {};
    }
    result.push_back(static_cast<uint16_t>(*u));
  }
  return result;
}

}  // namespace corvane
