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

// How soon a value is safe, and for how long. A key is always kept in the same way.
enum class Kept {
  // A setting: on disk within a second and at the end of the process. Nobody waits for the disk.
  eventually,
  // What the next process must know if this one is cut off: another process can read the value
  // before the call returns. It is about windows on a desktop, so it need not outlive them, the
  // session or a loss of power.
  atOnce,
};

// Stored values by key, where the user's settings live. Reads see every earlier write. Main thread.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  // The stored value, else the registered one, else nothing.
  virtual std::optional<DefaultsValue> value(std::string_view key) const = 0;

  // Stores a value. After an error it may be lost with the process, but this process still reads
  // it; what is kept eventually reports none.
  virtual std::expected<void, SystemError> set(std::string_view key, DefaultsValue value,
                                               Kept kept = Kept::eventually) = 0;

  // Values for keys that have none stored; not stored themselves.
  virtual void registerDefaults(std::map<std::string, DefaultsValue> values) = 0;
};

// Typed reads. A value of another type is coerced as NSUserDefaults does: "5" is the number 5 and
// true, 1 is true, "yes" is true, true is 1 and "1". What cannot be coerced is false, 0 or nothing.
bool boolean(const UserDefaults& defaults, std::string_view key);
double number(const UserDefaults& defaults, std::string_view key);
std::optional<std::string> text(const UserDefaults& defaults, std::string_view key);
std::optional<std::string> data(const UserDefaults& defaults, std::string_view key);

}  // namespace pellow
