#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platforms/simulated/accessibility.h"
#include "platforms/simulated/alerts.h"
#include "platforms/simulated/clock.h"
#include "platforms/simulated/colour_panel.h"
#include "platforms/simulated/desktop.h"
#include "platforms/simulated/desktop_state.h"
#include "platforms/simulated/event_monitors.h"
#include "platforms/simulated/form_windows.h"
#include "platforms/simulated/login_item.h"
#include "platforms/simulated/open_menu.h"
#include "platforms/simulated/panels.h"
#include "platforms/simulated/pointer.h"
#include "platforms/simulated/process.h"
#include "platforms/simulated/queues.h"
#include "platforms/simulated/screen_capture.h"
#include "platforms/simulated/screens.h"
#include "platforms/simulated/status_bar.h"
#include "platforms/simulated/symbolic_hot_keys.h"
#include "platforms/simulated/system.h"
#include "platforms/simulated/update_framework.h"
#include "platforms/simulated/user_defaults.h"
#include "platforms/simulated/uuid_source.h"
#include "platforms/simulated/workspace.h"

namespace pellow::simulated {

struct Options {
  std::uint64_t seed = 1;  // one seed, one history
  std::vector<std::string> arguments;
};

// A process on a desktop in memory. It outlives the program that runs on it.
class Platform final : public pellow::Platform {
 public:
  // On a fresh desktop: one display and no other application.
  explicit Platform(Options options = {});
  // The next process on the desktop that another one left.
  explicit Platform(DesktopState left, Options options = {});

  Desktop& desktop() { return desktop_; }

  Accessibility& accessibility() override { return accessibility_; }
  Alerts& alerts() override { return alerts_; }
  Clock& clock() override { return clock_; }
  ColourPanel& colourPanel() override { return colourPanel_; }
  EventMonitors& eventMonitors() override { return eventMonitors_; }
  FormWindows& formWindows() override { return formWindows_; }
  const Log& log() override { return log_; }
  LoginItem& loginItem() override { return loginItem_; }
  Panels& panels() override { return panels_; }
  Process& process() override { return process_; }
  Queues& queues() override { return queues_; }
  ScreenCapture& screenCapture() override { return screenCapture_; }
  Screens& screens() override { return screens_; }
  StatusBar& statusBar() override { return statusBar_; }
  SymbolicHotKeys& symbolicHotKeys() override { return symbolicHotKeys_; }
  UpdateFramework& updateFramework() override { return updateFramework_; }
  UserDefaults& userDefaults() override { return userDefaults_; }
  UUIDSource& uuidSource() override { return uuidSource_; }
  Workspace& workspace() override { return workspace_; }

 private:
  friend class Desktop;

  System system_;
  Accessibility accessibility_;
  Alerts alerts_;
  Clock clock_;
  ColourPanel colourPanel_;
  EventMonitors eventMonitors_;
  FormWindows formWindows_;
  Log log_;
  LoginItem loginItem_;
  OpenMenu menu_;
  Panels panels_;
  Pointer pointer_;
  Process process_;
  Queues queues_;
  ScreenCapture screenCapture_;
  Screens screens_;
  StatusBar statusBar_;
  SymbolicHotKeys symbolicHotKeys_;
  UpdateFramework updateFramework_;
  UserDefaults userDefaults_;
  UUIDSource uuidSource_;
  Workspace workspace_;
  Desktop desktop_;
};

}  // namespace pellow::simulated
