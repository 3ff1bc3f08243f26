#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/log.h"
#include "base/notification_center.h"
#include "platform/update_framework.h"

namespace pellow {

// Looks for newer versions of the program, and keeps in mind that one is waiting instead of
// interrupting the user. Main thread.
class Updater {
 public:
  // Posted when `pendingVersion` may have changed.
  static constexpr const char* stateDidChange = "pellow.updateStateDidChange";

  // Begins the schedule of the framework.
  Updater(UpdateFramework& framework, NotificationCenter& notifications, const Log& log);
  Updater(const Updater&) = delete;
  Updater& operator=(const Updater&) = delete;

  // Looks now, for the user, and shows the result in front of everything.
  void checkForUpdates() { framework_.checkForUpdates(); }

  // The version, for people, that the schedule has found and the user has not seen.
  const std::optional<std::string>& pendingVersion() const { return pendingVersion_; }

  // This program's version for people: "1.2", or "?" when nobody knows.
  std::string currentVersion() const { return framework_.currentVersion().value_or("?"); }

  // Called when an update is about to replace the program, which ends after this returns.
  std::function<void()> onWillRelaunch;

 private:
  void willShow(bool shownByFramework, const std::string& displayVersion);
  void setPendingVersion(std::optional<std::string> version);
  void willRelaunch();

  UpdateFramework& framework_;
  NotificationCenter& notifications_;
  const Log& log_;
  std::optional<std::string> pendingVersion_;
};

}  // namespace pellow
