#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/target_window.h"
#include "base/geometry.h"
#include "base/subscription.h"
#include "base/uuid.h"
#include "model/preferences.h"
#include "model/zone_store.h"
#include "palette/palette_view.h"
#include "platform/event_monitors.h"
#include "platform/panels.h"
#include "platform/queues.h"
#include "platform/screens.h"
#include "platform/workspace.h"

namespace pellow {

// The small menu below a window's minimize button: where to put this window, or all of its
// application. Never takes the focus from that application. Main thread.
class ActionPalette {
 public:
  // All of it outlives the palette.
  struct Surroundings {
    MainQueue& mainQueue;
    EventMonitors& monitors;
    Panels& panels;
    const Preferences& preferences;
    const Screens& screens;
    Workspace& workspace;
    const ZoneStore& zones;
  };

  explicit ActionPalette(const Surroundings& surroundings) : around_(surroundings) {}

  using Command = std::function<void(const TargetWindow&, UUID zoneID)>;
  Command onPellowWindow;
  Command onPellowApp;  // all windows of this window's application
  std::function<void()> onOpenSettings;
  // It was to be seen and is not any more.
  std::function<void()> onHidden;

  // For this window from now on, below its minimize button or, at the bottom of a display, above.
  void show(const TargetWindow& window, const AppKitRect& buttonFrame);

  // Goes after 0.2 s, but not while the pointer is on it or on its way between it and the button.
  void scheduleHide();
  void hideImmediately();

  // The window it is shown for.
  const std::optional<TargetWindow>& window() const { return window_; }

  // Itself and the gap to the button.
  AppKitRect protectedRect() const;

 private:
  std::vector<PaletteRow> rows();
  // One for each zone, which a title names when there are several.
  void addRowsForZones(std::vector<PaletteRow>& rows, const std::string& title,
                       std::string_view symbol, const Command& command);
  std::function<void()> hidingAfter(std::function<void()> action);
  AppKitPoint origin(Size size) const;
  bool isPointerNear() const;

  Surroundings around_;
  std::unique_ptr<Panel> panel_;  // made when it is first to be seen
  std::optional<TargetWindow> window_;
  AppKitRect buttonFrame_;
  Subscription hideWork_;
  std::optional<Subscription> clickMonitor_;
};

}  // namespace pellow
