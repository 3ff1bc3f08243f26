#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "access/displays.h"
#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/task.h"
#include "capture/flight_animator.h"
#include "engine/pellow_controller.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "palette/action_palette.h"
#include "palette/hover_trigger.h"
#include "platform/platform.h"
#include "shortcuts/hotkey_manager.h"
#include "shortcuts/shortcut_action.h"
#include "shortcuts/shortcut_store.h"
#include "strips/tab_strip_controller.h"
#include "sync/settings_sync.h"
#include "ui/menu_bar_controller.h"
#include "ui/relauncher.h"
#include "ui/settings_window_controller.h"
#include "ui/updater.h"
#include "views/alert_presenter.h"

namespace pellow {

// The composition root: builds every long-lived object, owns it for the life of the process, and
// makes sure that no window stays hidden when the process ends. Main thread.
class AppDelegate {
 public:
  explicit AppDelegate(Platform& platform);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  PellowController& controller() { return controller_; }

  // Once, when the main loop runs. Begins as soon as the process is trusted for Accessibility,
  // without a relaunch.
  void applicationDidFinishLaunching();

  // When the session is about to end, or is saved, and before other programs write down where their
  // windows are: every window comes back before this returns. The session may go on after all.
  void sessionWillBeSaved();

  // Once, when the main loop is about to end: every window comes back before this returns.
  void applicationWillTerminate();

  // Carries out what a shortcut or a menu item asks for.
  void perform(ShortcutAction action);

  void showSettings();

 private:
  void connectStrips();
  void connectPalette();
  void makeUpdater();
  void makeMenuBar();
  void promptForPermission();
  void permissionGranted();
  void begin();
  void logPermissions();
  void installHotkeys();
  void warnOfSharedShortcuts();
  void installTerminationSignalHandlers();
  void checkScreenRecordingIfNeeded();
  // Shows the alert; its first button opens these system settings.
  Task<> explainPermission(Alert alert, std::string_view settings);
  void toggleFloatAbove();
  void makeSettings();
  void introduce();

  Platform& platform_;
  NotificationCenter notifications_;
  Preferences preferences_;
  ZoneStore zones_;
  ShortcutStore shortcuts_;
  TabStore tabs_;
  Displays displays_;
  AlertPresenter alerts_;
  FlightAnimator animator_;
  TabStripController strips_;
  PellowController controller_;
  ActionPalette palette_;
  HoverTrigger hoverTrigger_;
  Subscription tabChanges_;
  HotkeyManager hotkeys_;
  SettingsSync settingsSync_;
  Relauncher relauncher_;
  std::optional<Updater> updater_;                    // from the launch on
  std::optional<MenuBarController> menuBar_;          // from the launch on
  std::optional<SettingsWindowController> settings_;  // from the first request on
  std::vector<Subscription> signalSources_;
  Subscription grantPoll_;
  TaskScope permissionAlert_;
};

}  // namespace pellow
