#include "ui/settings_window_controller.h"

#include <utility>

#include "ui/appearance_pane.h"
#include "ui/general_pane.h"
#include "ui/permissions_pane.h"
#include "ui/shortcuts_pane.h"
#include "ui/zones_pane.h"

namespace pellow {
namespace {

constexpr Seconds pollInterval = 1;

}  // namespace

SettingsWindowController::SettingsWindowController(const Surroundings& surroundings)
    : around_(surroundings),
      window_(around_.formWindows.makeWindow("pellow-settings", "Pellow Settings")) {
  for (const auto action : allCases<ShortcutAction>())
    recorders_
        .emplace_back(action,
                      ShortcutRecorder::Surroundings{.alerts = around_.alerts,
                                                     .eventMonitors = around_.eventMonitors,
                                                     .log = around_.log,
                                                     .shortcuts = around_.shortcuts,
                                                     .symbolicHotKeys = around_.symbolicHotKeys,
                                                     .texts = around_.texts})
        .onRecorded = [this] { rebuild(); };
  for (const auto* notice :
       {Preferences::didChange, ZoneStore::didChange, ShortcutStore::didChange})
    notices_.push_back(around_.notifications.observe(notice, [this] { rebuild(); }));
  window_->onClosed = [this] { poll_.cancel(); };
}

void SettingsWindowController::present() {
  poll_ = around_.mainQueue.every(pollInterval, [this] { rebuild(); });
  rebuild();
  window_->present();
}

void SettingsWindowController::rebuild() {
  if (poll_) window_->setForm(form());
}

void SettingsWindowController::setSyncStatus(std::string status) {
  syncStatus_ = std::move(status);
  rebuild();
}

Form SettingsWindowController::form() {
  const GeneralPane general{.loginItem = around_.loginItem,
                            .preferences = around_.preferences,
                            .shortcuts = around_.shortcuts,
                            .texts = around_.texts,
                            .updates = around_.updates,
                            .workspace = around_.workspace,
                            .syncStatus = syncStatus_,
                            .onSetLaunchAtLogin =
                                [this](bool enabled) {
                                  if (onSetLaunchAtLogin) onSetLaunchAtLogin(enabled);
                                  rebuild();
                                },
                            .onCheckForUpdates = onCheckForUpdates,
                            .onSetAutomaticallyChecks =
                                [this](bool automatically) {
                                  around_.updates.setAutomaticallyChecks(automatically);
                                  rebuild();
                                }};
  const PermissionsPane permissions{.accessibility = around_.accessibility,
                                    .preferences = around_.preferences,
                                    .screenCapture = around_.screenCapture,
                                    .texts = around_.texts,
                                    .workspace = around_.workspace,
                                    .onRelaunch = onRelaunch};
  return {{general.form(), appearancePane(around_.preferences, around_.texts),
           zonesPane(around_.zones, around_.tabs),
           shortcutsPane(recorders_, around_.texts,
                         [this](ShortcutRecorder& recorder) { record(recorder); }),
           permissions.form()}};
}

// The user wants the button that was clicked last.
void SettingsWindowController::record(ShortcutRecorder& recorder) {
  for (auto& other : recorders_)
    if (&other != &recorder && other.isRecording()) other.endRecording();
  recorder.beginRecording();
  rebuild();
}

}  // namespace pellow
