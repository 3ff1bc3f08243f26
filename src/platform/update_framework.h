#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/clock.h"

namespace pellow {

// What the program is told about updates. Main queue; every member may be absent.
struct UpdateDelegate {
  // An update was found. `shownByFramework` is true if the user asked; scheduled finds are never
  // shown.
  std::function<void(bool shownByFramework, const std::string& displayVersion)> willShowUpdate;
  // The user has seen the update that was found.
  std::function<void()> didReceiveUserAttention;
  // The program is about to be replaced; it ends after this returns.
  std::function<void()> willRelaunchApplication;
};

// Looks for newer versions of this program, on its own schedule and when asked. Main thread.
class UpdateFramework {
 public:
  virtual ~UpdateFramework() = default;

  // Begins the schedule. Once.
  virtual void start(UpdateDelegate delegate) = 0;

  // Looks now, for the user, and shows the result in a window of its own. It brings this process to
  // the front for that, and for whatever else it asks the user.
  virtual void checkForUpdates() = 0;

  virtual bool automaticallyChecks() const = 0;
  virtual void setAutomaticallyChecks(bool automatically) = 0;  // kept for later launches

  // How long ago the last check was, by this or an earlier launch; nothing before the first.
  virtual std::optional<Seconds> sinceLastCheck() const = 0;

  // This program's version for people: "1.2". Nothing when the bundle does not say.
  virtual std::optional<std::string> currentVersion() const = 0;
};

}  // namespace pellow
