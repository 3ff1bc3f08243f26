#pragma once

#include <sys/types.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "base/log.h"
#include "platform/queues.h"
#include "platform/user_defaults.h"

namespace pellow {

// User defaults in a file: one JSON object. Each write replaces the file as a whole, so that nobody
// ever reads half of one; members that the program does not know stay as they are. A file that is
// no JSON object is set aside under another name; one that cannot be read is left alone, and the
// program goes on in memory. Both are told to the log.
//
// Two programs of one user, on two displays, may have one file. A write puts the values that this
// program has set since its last write into what the file holds by then, so that what the other one
// has set stays; of one key, the later write stands. Values are read once, when this is made: what
// the other one sets later is not seen.
class FileUserDefaults final : public UserDefaults {
 public:
  // $XDG_CONFIG_HOME/pellow/defaults.json; ~/.config stands for a folder that is not set.
  static std::filesystem::path standardFile();

  // Reads the file. Eventual writes are put together and written by work of `queue`.
  FileUserDefaults(const std::filesystem::path& file, MainQueue& queue, const Log& log);
  // Writes what has not been written.
  ~FileUserDefaults() override;
  FileUserDefaults(const FileUserDefaults&) = delete;
  FileUserDefaults& operator=(const FileUserDefaults&) = delete;

  std::optional<DefaultsValue> value(std::string_view key) const override;
  std::expected<void, SystemError> set(std::string_view key, DefaultsValue value,
                                       Kept kept) override;
  void registerDefaults(std::map<std::string, DefaultsValue> values) override;

  // Writes what has not been written, for an end of the process without destructors.
  void flush();

 private:
  // What the file holds; nothing when there is none, or had to be set aside.
  std::expected<std::optional<nlohmann::ordered_json>, SystemError> read() const;
  std::expected<void, SystemError> setAside() const;
  std::expected<void, SystemError> write();

  std::filesystem::path file_;
  MainQueue& queue_;
  const Log& log_;
  nlohmann::ordered_json stored_ = nlohmann::ordered_json::object();
  std::map<std::string, DefaultsValue, std::less<>> registered_;
  std::optional<SystemError> unusable_;         // the file cannot be read and must not be replaced
  std::optional<SystemError> reported_;         // the last failure of an eventual write
  std::set<std::string, std::less<>> changed_;  // keys, since the last write
  Subscription pendingWrite_;
};

}  // namespace pellow
