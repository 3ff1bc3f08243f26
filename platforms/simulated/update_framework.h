#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/update_framework.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

class Process;

// Updates as the desktop publishes them. It looks by itself a day after the last check, or after
// the start if there was none; the desktop can bring that check forward.
//
// A check tells the program what it found: by schedule only that there is something; for the user
// also that the window with it shows, and has been seen. That there is nothing new only the user
// hears, in an alert of the framework.
class UpdateFramework final : public pellow::UpdateFramework {
 public:
  UpdateFramework(System& system, Process& process) : system_(system), process_(process) {}

  void start(UpdateDelegate delegate) override;
  void checkForUpdates() override;
  bool automaticallyChecks() const override { return system_.state.updates.checksAutomatically; }
  void setAutomaticallyChecks(bool automatically) override;
  std::optional<Seconds> sinceLastCheck() const override;
  std::optional<std::string> currentVersion() const override {
    return system_.state.updates.installed;
  }

  // There is a newer version, which the next check finds.
  void publish(std::string version) { system_.state.updates.published = std::move(version); }
  // What the bundle says; nothing when it does not.
  void setCurrentVersion(std::optional<std::string> version) {
    system_.state.updates.installed = std::move(version);
  }
  // The schedule's next check comes now, unless it is switched off.
  void checkBySchedule();
  // What its window says, for example "Pellow 2.1 is available."; nothing while it shows none.
  std::optional<std::string> windowText() const;
  void closeWindow();
  // Installs what the window shows and ends the process; the next one on this desktop has the new
  // version. Throws when the window shows no update.
  void install();

 private:
  enum class Asker { user, schedule };

  std::optional<std::string> check();
  void tellUser();
  void plan();

  System& system_;
  Process& process_;
  std::optional<UpdateDelegate> delegate_;
  Seconds started_ = 0;
  bool showsWindow_ = false;
  std::optional<std::string> shownVersion_;
  Subscription nextCheck_;
};

}  // namespace pellow::simulated
