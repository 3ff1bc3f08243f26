#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/texts.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/accessibility.h"
#include "platform/event_monitors.h"
#include "platform/form_windows.h"
#include "platform/login_item.h"
#include "platform/queues.h"
#include "platform/screen_capture.h"
#include "platform/symbolic_hot_keys.h"
#include "platform/update_framework.h"
#include "platform/workspace.h"
#include "shortcuts/shortcut_recorder.h"
#include "shortcuts/shortcut_store.h"
#include "views/alert_presenter.h"

namespace pellow {

// The settings window. Each control writes its value at once, and shows what the stores and the
// system say, whoever changes it. Main thread.
class SettingsWindowController {
 public:
  // All of it outlives the controller.
  struct Surroundings {
    const Accessibility& accessibility;
    AlertPresenter& alerts;
    EventMonitors& eventMonitors;
    FormWindows& formWindows;
    const Log& log;
    const LoginItem& loginItem;
    MainQueue& mainQueue;
    NotificationCenter& notifications;
    Preferences& preferences;
    ScreenCapture& screenCapture;
    ShortcutStore& shortcuts;
    const SymbolicHotKeys& symbolicHotKeys;
    TabStore& tabs;
    const Texts& texts;
    UpdateFramework& updates;
    Workspace& workspace;
    ZoneStore& zones;
  };

  explicit SettingsWindowController(const Surroundings& surroundings);
  SettingsWindowController(const SettingsWindowController&) = delete;
  SettingsWindowController& operator=(const SettingsWindowController&) = delete;

  // Brings the window to the front, on the pane that was selected last. While it is open, it looks
  // every second at what nobody announces: permissions, the login item, updates.
  void present();

  // Shows everything as it is now; a window that is not open does that when it is presented.
  void rebuild();

  // Where the settings file is, or why there is none.
  void setSyncStatus(std::string status);

  // The user asks to look for updates now, to open the program at login or no longer, and to end
  // it for a new start.
  std::function<void()> onCheckForUpdates;
  std::function<void(bool enabled)> onSetLaunchAtLogin;
  std::function<void()> onRelaunch;

 private:
  Form form();
  void record(ShortcutRecorder& recorder);

  Surroundings around_;
  std::string syncStatus_;
  std::deque<ShortcutRecorder> recorders_;
  std::unique_ptr<FormWindow> window_;
  std::vector<Subscription> notices_;
  Subscription poll_;  // while the window is open
};

}  // namespace pellow
