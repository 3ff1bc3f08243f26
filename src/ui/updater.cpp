#include "ui/updater.h"

#include <utility>

namespace pellow {

Updater::Updater(UpdateFramework& framework, NotificationCenter& notifications, const Log& log)
    : framework_(framework), notifications_(notifications), log_(log) {
  framework_.start({.willShowUpdate =
                        [this](bool shownByFramework, const std::string& displayVersion) {
                          willShow(shownByFramework, displayVersion);
                        },
                    .didReceiveUserAttention = [this] { setPendingVersion(std::nullopt); },
                    .willRelaunchApplication = [this] { willRelaunch(); }});
}

void Updater::willShow(bool shownByFramework, const std::string& displayVersion) {
  if (shownByFramework) return;
  log_.info("Update available: {}", displayVersion);
  setPendingVersion(displayVersion);
}

void Updater::setPendingVersion(std::optional<std::string> version) {
  pendingVersion_ = std::move(version);
  notifications_.post(stateDidChange);
}

// Only Sparkle replaces a program that runs.
void Updater::willRelaunch() {
  log_.info("Sparkle is about to relaunch Pellow; restoring pellowed windows");
  if (onWillRelaunch) onWillRelaunch();
}

}  // namespace pellow
