#pragma once

#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "base/uuid.h"

// Reading and writing records as JSON, strictly: a value of the wrong type, out of range or without
// a name fails its whole record instead of becoming something else. Records bring `to_json` and
// `from_json`, which throws; `decodeJSON` catches.

namespace pellow {

struct JSONError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

void to_json(nlohmann::json& json, const UUID& uuid);
void from_json(const nlohmann::json& json, UUID& uuid);

// The text of a value; nothing when JSON cannot hold it (infinities, text that is not UTF-8).
enum class JSONLayout { compact, pretty };
std::optional<std::string> encodeJSON(const nlohmann::json& json,
                                      JSONLayout layout = JSONLayout::compact);

// Nothing when the text is not JSON, or not that of a T.
template <class T>
std::optional<T> decodeJSON(std::string_view text) {
  try {
    return nlohmann::json::parse(text).template get<T>();
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  } catch (const JSONError&) {
    return std::nullopt;
  }
}

// One value of a record; throws unless it is of type T. Whole numbers may be written as 3 or 3.0.
template <class T>
T readJSON(const nlohmann::json& json) {
  return json.get<T>();
}

template <std::unsigned_integral T>
  requires(!std::same_as<T, bool>)
T readJSON(const nlohmann::json& json) {
  const auto limit = std::numeric_limits<T>::max();
  if (json.is_number_unsigned() && json.get<std::uint64_t>() <= limit) return json.get<T>();
  if (json.is_number_float()) {
    const auto number = json.get<double>();
    // 2^n is exact as a double where 2^n - 1 may not be.
    const auto end = std::ldexp(1.0, std::numeric_limits<T>::digits);
    if (number >= 0 && number < end && std::trunc(number) == number) return static_cast<T>(number);
  }
  throw JSONError("no whole number in range");
}

// A member that must be there.
template <class T>
T readMember(const nlohmann::json& json, const char* key) {
  return readJSON<T>(json.at(key));
}

// A member that may be absent, or null.
template <class T>
std::optional<T> readOptional(const nlohmann::json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end() || found->is_null()) return std::nullopt;
  return readJSON<T>(*found);
}

}  // namespace pellow
