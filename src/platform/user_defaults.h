#pragma once

#include <cstdint>
#include <expected>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/system_error.h"

namespace pellow {

// Bytes that the program encodes and decodes itself, most often JSON.
struct DefaultsData {
  std::string bytes;

  bool operator==(const DefaultsData&) const = default;
};

using DefaultsValue = std::variant<bool, double, std::string, DefaultsData>;

enum class Durability {
  eventual,   // on disk within a second, and at the end of the process
  immediate,  // on disk before the call returns
};

// The values that the user's settings live in, by key. Reads see every earlier write. Main thread.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  // The stored value, else the registered one, else nothing.
  virtual std::optional<DefaultsValue> value(std::string_view key) const = 0;

  // Stores a value. An error means that it may be lost with the process, not that a read of this
  // process does not see it; `eventual` writes do not report one.
  virtual std::expected<void, SystemError> set(std::string_view key, DefaultsValue value,
                                               Durability durability = Durability::eventual) = 0;

  // Values for keys that have none stored. They are not stored themselves.
  virtual void registerDefaults(std::map<std::string, DefaultsValue> values) = 0;
};

// Typed reads. A value of another type is coerced as NSUserDefaults does: "5" is the number 5 and
// true, 1 is true, "yes" is true, true is 1 and "1". What cannot be coerced is false, 0 or nothing.
bool boolean(const UserDefaults& defaults, std::string_view key);
double number(const UserDefaults& defaults, std::string_view key);
std::optional<std::string> text(const UserDefaults& defaults, std::string_view key);
std::optional<std::string> data(const UserDefaults& defaults, std::string_view key);

}  // namespace pellow
