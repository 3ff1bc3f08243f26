#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"
#include "platform/accessibility.h"
#include "platform/event_monitors.h"
#include "platform/image.h"
#include "platform/queues.h"
#include "platform/screen_capture.h"
#include "platform/screens.h"
#include "platform/symbolic_hot_keys.h"
#include "platform/system_error.h"
#include "platform/workspace.h"
#include "platforms/linux/x11/desktop_shortcut.h"
#include "platforms/linux/x11/pixel_rect.h"

namespace pellow {

// An X11 desktop with a window manager that follows EWMH: the ports that look at other
// applications' windows, the screens and the keyboard. Main thread, except where a port says
// otherwise; ends after every thread that uses its ports.
class X11Desktop {
 public:
  // What the desktop cannot know without the program's own windows and the icon theme. Called on
  // the main thread.
  struct Hooks {
    // The picture of a theme icon ("firefox") or an icon file ("/opt/x/x.png").
    std::function<std::optional<Image>(const std::string& iconName)> loadIcon;
    // Whether a window of this process has the keyboard; `focus` is the one that has it for X.
    std::function<bool(std::uint32_t focus)> ownWindowHasKeyboard;
    // The shortcuts in the settings of the desktop, with a window manager of this name.
    std::function<std::vector<DesktopShortcut>(std::string_view windowManager)> shortcuts;
  };

  // Returns once a window manager that `open` accepts runs on the display, or after `patience`: a
  // session may start programs before its window manager. Blocks.
  static void awaitWindowManager(const std::string& displayName, Seconds patience, const Log& log);

  // Opens a display; an empty name stands for the environment's DISPLAY. `scale` is pixels per
  // point, for the whole X screen. The error is one sentence that names the problem and the way
  // out: the display cannot be opened, or no window manager that follows EWMH runs on it.
  static std::expected<std::unique_ptr<X11Desktop>, SystemError> open(
      const std::string& displayName, double scale, Hooks hooks, const Log& log);

  ~X11Desktop();
  X11Desktop(const X11Desktop&) = delete;
  X11Desktop& operator=(const X11Desktop&) = delete;

  Accessibility& accessibility();
  Workspace& workspace();
  Screens& screens();
  EventMonitors& eventMonitors();
  SymbolicHotKeys& symbolicHotKeys();

  // The parts of the X screen that panels have for themselves.
  std::vector<PixelRect> panels() const;

  // Whether the window manager makes a bar, as wide as a monitor, of each dock.
  bool stretchesDocks() const;

  // The desktop takes this many pixels for a point from now on.
  void setScale(double scale);

  // Takes pictures on a serial queue of its own; ends before this.
  std::unique_ptr<ScreenCapture> makeScreenCapture(Queues& queues);

  // How the main thread takes it that somebody else has the server for himself (XGrabServer).
  // Patient, as it is at first, it waits, seconds if need be. Else it waits for a few hundredths of
  // a second and goes on: until the server answers again, ports answer what they last knew, and
  // what they are asked to do, and the news of the desktop, are put off. Nothing is lost by that.
  void setPatient(bool isPatient);

  // Whether the server answers right now. A main thread that is not patient asks this before a call
  // of somebody else's that waits for the server.
  bool serverAnswers();

  // Readable when `processEvents` has something to do.
  int fileDescriptor() const;

  // Handles everything that has arrived and calls the observers; never blocks for more than a few
  // round trips. False when the display is gone: `connectionError` says so, and nothing comes any
  // more.
  bool processEvents();
  SystemError connectionError() const;

  // Makes this process the one Pellow of this X screen until it ends. The error says that another
  // one is, or that the server did not answer.
  std::expected<void, SystemError> claimInstance();

  // Claims like `claimInstance`, but blocks until the other Pellow has gone, `timeout` at most.
  std::expected<void, SystemError> waitForInstance(Seconds timeout);

  // Hands a key press for a window of this process, with the key code and the state of the event,
  // to the local monitors. False when one of them swallowed it: then no window may see it. (Presses
  // for other applications reach the global monitors by themselves.)
  bool deliverLocalKeyDown(std::uint8_t keycode, std::uint16_t state);

  // Where an AppKit rectangle lies on the X screen, and back.
  PixelRect toPixels(const AppKitRect& rect) const;
  AppKitRect fromPixels(const PixelRect& rect) const;

 private:
  struct Parts;
  explicit X11Desktop(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> parts_;
};

}  // namespace pellow
