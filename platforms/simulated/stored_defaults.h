#pragma once

#include <expected>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/user_defaults.h"

namespace pellow::simulated {

// User defaults as the desktop keeps them: what the next process would read, and what the program
// wrote but a crash would lose. Times are virtual.
class StoredDefaults {
 public:
  // What the program reads.
  std::optional<DefaultsValue> value(std::string_view key) const;
  // What a crash at this moment would leave.
  std::optional<DefaultsValue> afterCrash(std::string_view key, Seconds now) const;

  std::expected<void, SystemError> write(std::string_view key, DefaultsValue value, Kept kept,
                                         Seconds now);

  // Somebody else writes; nothing of it can be lost.
  void put(std::string_view key, DefaultsValue value);

  // The next write of the key, or of any key, that is to be kept at once is answered with the error
  // and stays in memory.
  void failNextWrite(std::optional<std::string> key, SystemError error);

  // The program ends normally, or is cut off.
  void saveAll();
  void loseUnsaved(Seconds now);

 private:
  struct Write {
    std::string key;
    DefaultsValue value;
    Seconds saved;  // the moment from which it is safe
  };
  struct Fault {
    std::optional<std::string> key;
    SystemError error;
  };
  using Values = std::map<std::string, DefaultsValue, std::less<>>;

  void settle(Seconds now);

  Values saved_;
  std::vector<Write> unsaved_;  // the oldest first
  std::vector<Fault> faults_;
};

}  // namespace pellow::simulated
