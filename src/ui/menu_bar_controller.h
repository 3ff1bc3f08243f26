#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/task.h"
#include "base/texts.h"
#include "engine/pellow_controller.h"
#include "model/preferences.h"
#include "platform/accessibility.h"
#include "platform/menu.h"
#include "platform/process.h"
#include "platform/screen_capture.h"
#include "platform/status_bar.h"
#include "platform/workspace.h"
#include "shortcuts/shortcut_action.h"
#include "shortcuts/shortcut_store.h"
#include "ui/relauncher.h"
#include "ui/updater.h"
#include "views/alert_presenter.h"

namespace pellow {

// The status item and its menu, which is made anew each time it opens. Main thread.
class MenuBarController {
 public:
  // All of it outlives the controller.
  struct Surroundings {
    Accessibility& accessibility;
    AlertPresenter& alerts;
    PellowController& controller;
    const Log& log;
    NotificationCenter& notifications;
    const Preferences& preferences;
    Process& process;
    Relauncher& relauncher;
    const ScreenCapture& screenCapture;
    const ShortcutStore& shortcuts;
    StatusBar& statusBar;
    const Texts& texts;
    Updater& updater;
    Workspace& workspace;
  };

  explicit MenuBarController(const Surroundings& surroundings);
  MenuBarController(const MenuBarController&) = delete;
  MenuBarController& operator=(const MenuBarController&) = delete;

  // The user asks for the settings window, or for what a shortcut does too.
  std::function<void()> onOpenSettings;
  std::function<void(ShortcutAction)> onAction;

  // What another menu is to offer because nobody can get at this one; empty while somebody can.
  std::vector<MenuItem> itemsToOfferElsewhere();

 private:
  void refreshStatusItem();
  Menu menu();
  void addWarnings(Menu& menu);
  void addActions(Menu& menu);
  void addProgram(Menu& menu);
  MenuItem actionItem(std::string_view title, ShortcutAction action);
  Task<> rescueHiddenWindows();

  Surroundings around_;
  std::unique_ptr<StatusItem> statusItem_;
  Subscription updates_;
  TaskScope rescue_;
};

}  // namespace pellow
