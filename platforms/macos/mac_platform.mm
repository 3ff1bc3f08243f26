#include "platforms/macos/mac_platform.h"

#include <memory>

#include "platforms/macos/accessibility/mac_accessibility.h"
#include "platforms/macos/appkit/mac_colour_panel.h"
#include "platforms/macos/appkit/mac_event_monitors.h"
#include "platforms/macos/appkit/mac_panels.h"
#include "platforms/macos/appkit/mac_status_bar.h"
#include "platforms/macos/appkit/mac_system_colours.h"
#include "platforms/macos/capture/mac_screen_capture.h"
#include "platforms/macos/foundation/foreground.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/macos/system/mac_clock.h"
#include "platforms/macos/system/mac_login_item.h"
#include "platforms/macos/system/mac_process.h"
#include "platforms/macos/system/mac_queues.h"
#include "platforms/macos/system/mac_screens.h"
#include "platforms/macos/system/mac_symbolic_hot_keys.h"
#include "platforms/macos/system/mac_user_defaults.h"
#include "platforms/macos/system/mac_uuid_source.h"
#include "platforms/macos/system/mac_workspace.h"
#include "platforms/macos/updates/mac_update_framework.h"
#include "platforms/macos/windows/mac_alerts.h"
#include "platforms/macos/windows/mac_form_windows.h"
#include "platforms/macos/windows/mac_probe_windows.h"
#include "platforms/posix/posix_files.h"

namespace pellow {

struct MacPlatform::Parts {
  const Log& log;
  const std::shared_ptr<Foreground> foreground = std::make_shared<Foreground>();
  MacProcess process;
  MacUpdateFramework updates{log, foreground};
  MacAccessibility accessibility;
  MacClock clock;
  MacUUIDSource uuidSource;
  PosixFiles files{toText(NSHomeDirectory()), toText(NSTemporaryDirectory())};
  MacUserDefaults userDefaults;
  MacSymbolicHotKeys symbolicHotKeys;
  MacLoginItem loginItem;
  MacQueues queues;
  MacScreenCapture screenCapture;
  MacScreens screens;
  MacWorkspace workspace{foreground};
  MacEventMonitors eventMonitors;
  MacPanels panels{queues.main(), [this] { eventMonitors.pointerMovedOverPanel(); }};
  MacStatusBar statusBar;
  MacColourPanel colourPanel{foreground};
  MacSystemColours systemColours;
  MacAlerts alerts{foreground};
  MacFormWindows formWindows{foreground};
  MacProbeWindows probeWindows{foreground};

  explicit Parts(const Log& systemLog) : log(systemLog) {}
};

MacPlatform::MacPlatform(const Log& log) : parts_(std::make_unique<Parts>(log)) {}
MacPlatform::~MacPlatform() = default;

Accessibility& MacPlatform::accessibility() { return parts_->accessibility; }
Alerts& MacPlatform::alerts() { return parts_->alerts; }
Clock& MacPlatform::clock() { return parts_->clock; }
ColourPanel& MacPlatform::colourPanel() { return parts_->colourPanel; }
EventMonitors& MacPlatform::eventMonitors() { return parts_->eventMonitors; }
Files& MacPlatform::files() { return parts_->files; }
FormWindows& MacPlatform::formWindows() { return parts_->formWindows; }
const Log& MacPlatform::log() { return parts_->log; }
LoginItem& MacPlatform::loginItem() { return parts_->loginItem; }
Panels& MacPlatform::panels() { return parts_->panels; }
ProbeWindows& MacPlatform::probeWindows() { return parts_->probeWindows; }
Process& MacPlatform::process() { return parts_->process; }
Queues& MacPlatform::queues() { return parts_->queues; }
ScreenCapture& MacPlatform::screenCapture() { return parts_->screenCapture; }
Screens& MacPlatform::screens() { return parts_->screens; }
StatusBar& MacPlatform::statusBar() { return parts_->statusBar; }
SymbolicHotKeys& MacPlatform::symbolicHotKeys() { return parts_->symbolicHotKeys; }
SystemColours& MacPlatform::systemColours() { return parts_->systemColours; }
UpdateFramework& MacPlatform::updateFramework() { return parts_->updates; }
UserDefaults& MacPlatform::userDefaults() { return parts_->userDefaults; }
UUIDSource& MacPlatform::uuidSource() { return parts_->uuidSource; }
Workspace& MacPlatform::workspace() { return parts_->workspace; }

}  // namespace pellow
