#pragma once

#include "base/log.h"
#include "base/texts.h"
#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/clock.h"
#include "platform/colour_panel.h"
#include "platform/event_monitors.h"
#include "platform/files.h"
#include "platform/form_windows.h"
#include "platform/login_item.h"
#include "platform/panels.h"
#include "platform/probe_windows.h"
#include "platform/process.h"
#include "platform/queues.h"
#include "platform/screen_capture.h"
#include "platform/screens.h"
#include "platform/status_bar.h"
#include "platform/symbolic_hot_keys.h"
#include "platform/system_colours.h"
#include "platform/update_framework.h"
#include "platform/user_defaults.h"
#include "platform/uuid_source.h"
#include "platform/workspace.h"

namespace pellow {

// Everything that the program asks of an operating system. Only the composition root sees it whole;
// every other class takes the ports that it uses.
class Platform {
 public:
  virtual ~Platform() = default;

  virtual Accessibility& accessibility() = 0;
  virtual Alerts& alerts() = 0;
  virtual Clock& clock() = 0;
  virtual ColourPanel& colourPanel() = 0;
  virtual EventMonitors& eventMonitors() = 0;
  virtual Files& files() = 0;
  virtual FormWindows& formWindows() = 0;
  virtual const Log& log() = 0;
  virtual LoginItem& loginItem() = 0;
  virtual Panels& panels() = 0;
  virtual ProbeWindows& probeWindows() = 0;
  virtual Process& process() = 0;
  virtual Queues& queues() = 0;
  virtual ScreenCapture& screenCapture() = 0;
  virtual Screens& screens() = 0;
  virtual StatusBar& statusBar() = 0;
  virtual SymbolicHotKeys& symbolicHotKeys() = 0;
  virtual SystemColours& systemColours() = 0;
  virtual const Texts& texts() = 0;
  virtual UpdateFramework& updateFramework() = 0;
  virtual UserDefaults& userDefaults() = 0;
  virtual UUIDSource& uuidSource() = 0;
  virtual Workspace& workspace() = 0;
};

}  // namespace pellow
