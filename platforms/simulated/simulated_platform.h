#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platforms/simulated/desktop_state.h"
#include "platforms/simulated/simulated_accessibility.h"
#include "platforms/simulated/simulated_alerts.h"
#include "platforms/simulated/simulated_clock.h"
#include "platforms/simulated/simulated_colour_panel.h"
#include "platforms/simulated/simulated_desktop.h"
#include "platforms/simulated/simulated_event_monitors.h"
#include "platforms/simulated/simulated_form_windows.h"
#include "platforms/simulated/simulated_login_item.h"
#include "platforms/simulated/simulated_menu.h"
#include "platforms/simulated/simulated_panels.h"
#include "platforms/simulated/simulated_pointer.h"
#include "platforms/simulated/simulated_process.h"
#include "platforms/simulated/simulated_queues.h"
#include "platforms/simulated/simulated_screen_capture.h"
#include "platforms/simulated/simulated_screens.h"
#include "platforms/simulated/simulated_status_bar.h"
#include "platforms/simulated/simulated_symbolic_hot_keys.h"
#include "platforms/simulated/simulated_system.h"
#include "platforms/simulated/simulated_update_framework.h"
#include "platforms/simulated/simulated_user_defaults.h"
#include "platforms/simulated/simulated_uuid_source.h"
#include "platforms/simulated/simulated_workspace.h"

namespace pellow::simulated {

struct SimulatedOptions {
  std::uint64_t seed = 1;  // one seed, one history
  std::vector<std::string> arguments;
};

// A process on a desktop in memory. It outlives the program that runs on it.
class SimulatedPlatform final : public Platform {
 public:
  // On a fresh desktop: one display and no other application.
  explicit SimulatedPlatform(SimulatedOptions options = {});
  // The next process on the desktop that another one left.
  explicit SimulatedPlatform(DesktopState left, SimulatedOptions options = {});

  SimulatedDesktop& desktop() { return desktop_; }

  SimulatedAccessibility& accessibility() override { return accessibility_; }
  SimulatedAlerts& alerts() override { return alerts_; }
  SimulatedClock& clock() override { return clock_; }
  SimulatedColourPanel& colourPanel() override { return colourPanel_; }
  SimulatedEventMonitors& eventMonitors() override { return eventMonitors_; }
  SimulatedFormWindows& formWindows() override { return formWindows_; }
  const Log& log() override { return log_; }
  SimulatedLoginItem& loginItem() override { return loginItem_; }
  SimulatedPanels& panels() override { return panels_; }
  SimulatedProcess& process() override { return process_; }
  SimulatedQueues& queues() override { return queues_; }
  SimulatedScreenCapture& screenCapture() override { return screenCapture_; }
  SimulatedScreens& screens() override { return screens_; }
  SimulatedStatusBar& statusBar() override { return statusBar_; }
  SimulatedSymbolicHotKeys& symbolicHotKeys() override { return symbolicHotKeys_; }
  SimulatedUpdateFramework& updateFramework() override { return updateFramework_; }
  SimulatedUserDefaults& userDefaults() override { return userDefaults_; }
  SimulatedUUIDSource& uuidSource() override { return uuidSource_; }
  SimulatedWorkspace& workspace() override { return workspace_; }

 private:
  friend class SimulatedDesktop;

  SimulatedSystem system_;
  SimulatedAccessibility accessibility_;
  SimulatedAlerts alerts_;
  SimulatedClock clock_;
  SimulatedColourPanel colourPanel_;
  SimulatedEventMonitors eventMonitors_;
  SimulatedFormWindows formWindows_;
  Log log_;
  SimulatedLoginItem loginItem_;
  SimulatedMenu menu_;
  SimulatedPanels panels_;
  SimulatedPointer pointer_;
  SimulatedProcess process_;
  SimulatedQueues queues_;
  SimulatedScreenCapture screenCapture_;
  SimulatedScreens screens_;
  SimulatedStatusBar statusBar_;
  SimulatedSymbolicHotKeys symbolicHotKeys_;
  SimulatedUpdateFramework updateFramework_;
  SimulatedUserDefaults userDefaults_;
  SimulatedUUIDSource uuidSource_;
  SimulatedWorkspace workspace_;
  SimulatedDesktop desktop_;
};

}  // namespace pellow::simulated
