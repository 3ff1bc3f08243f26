#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/texts.h"
#include "model/preferences.h"
#include "model/zone_store.h"
#include "platform/files.h"
#include "platform/queues.h"
#include "shortcuts/shortcut_store.h"
#include "sync/settings_document.h"

namespace pellow {

// Keeps the user's settings alike on all machines through one file, which somebody else carries
// between them. The file is the whole state: whoever writes last wins, and nothing is merged. It is
// written at every change here and looked at every five seconds. A file that makes no sense changes
// nothing, and is kept beside the next one that is written here. Main thread.
class SettingsSync {
 public:
  // All of it outlives the sync.
  struct Surroundings {
    Files& files;
    const Log& log;
    MainQueue& mainQueue;
    NotificationCenter& notifications;
    Preferences& preferences;
    ShortcutStore& shortcuts;
    const Texts& texts;
    ZoneStore& zones;
  };

  explicit SettingsSync(const Surroundings& surroundings) : around_(surroundings) {}

  // Takes a file that another machine wrote, then writes what is new here, and goes on so. Once.
  void start();
  void stop();

  // Where the file is, or why there is none, in a line for the settings window.
  std::string status() const;

 private:
  bool isOn() const { return around_.preferences.value(preference::syncSettings); }
  // Nothing where the folder that is shared does not exist.
  std::optional<std::string> path() const;
  std::optional<std::string> encodedState() const;

  void poll();
  void pullIfChanged(const std::string& path);
  void apply(SettingsDocument document);
  void write();
  // Makes room for a file; false when what is there can neither be understood nor be kept.
  bool makeRoom(const std::string& path);
  void logFailure(const SystemError& error) const;

  Surroundings around_;
  std::optional<std::string> lastWritten_;  // or applied: the bytes
  std::optional<std::string> lastOffered_;  // what was to be written last, written or not
  std::optional<FileStamp> lastSeen_;
  bool isApplying_ = false;
  std::vector<Subscription> observers_;
  Subscription timer_;
};

}  // namespace pellow
