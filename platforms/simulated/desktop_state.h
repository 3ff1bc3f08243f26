#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/colour.h"
#include "base/geometry.h"
#include "base/log.h"
#include "base/texts.h"
#include "platform/ax_element.h"
#include "platform/ax_names.h"
#include "platform/screens.h"
#include "platform/symbolic_hot_keys.h"
#include "platform/workspace.h"
#include "platforms/simulated/stored_defaults.h"

namespace pellow::simulated {

using WindowID = int;

enum class AXCall { read, write, perform, pid, observe, hitTest };

// A call that answers with an error.
struct AXFault {
  // Of an attribute, action or notification; "pid", "elementAtPosition"; empty for every name.
  std::string name;
  std::optional<AXCall> call;  // absent for every kind
  AXError error = AXError::failure;
  bool once = true;
};

enum class CaptureCall { windows, image, display };

// A call for a picture, or for the list of windows, that answers with an error; once.
struct CaptureFault {
  std::optional<CaptureCall> call;  // absent for all
  SystemError error;
};

// What the program's maker and its update framework keep.
struct Updates {
  std::optional<std::string> installed = "1.0";  // absent when the bundle does not say
  std::optional<std::string> published;          // the newest version there is
  std::optional<Seconds> lastCheck;
  bool checksAutomatically = true;
};

// How a window behaves when others ask something of it.
struct WindowManners {
  Seconds answersAfter = 0;
  bool actsLate = false;       // carries out what it answered too late
  bool refusesToMove = false;  // answers success and stays
  bool clampsToDisplay = false;
  double gridStep = 0;  // points
  // Where it goes when asked to go somewhere.
  std::function<QuartzPoint(QuartzPoint asked)> moves = {};
  std::optional<int> callsUntilClosed = std::nullopt;
  std::vector<AXFault> faults;
};

// Whose doing something is.
enum class Actor { user, program };

struct WindowState {
  WindowID id = 0;
  ProcessID pid = 0;
  std::string title;
  QuartzRect frame;
  std::string subrole = std::string(AX::subrole::standardWindow);
  bool hasMinimizeButton = true;
  bool minimized = false;
  std::optional<Actor> minimizedBy = std::nullopt;  // while it is minimized
  int space = 1;                                    // the one it was opened on or came back to
  int lateChanges = 0;            // how often it acted after it had answered too late
  Colour fill = {0.5, 0.5, 0.5};  // of its content
  std::optional<QuartzPoint> paintedAt = std::nullopt;  // where its frame is not
  WindowManners manners;
};

// A window and what lies in it:
//
//   ┌──────────────────────────────┐
//   │ (26, 4) ▢ 14 × 14: button    │  title bar, 28 points high: the window itself
//   ├──────────────────────────────┤
//   │ content                      │
//   └──────────────────────────────┘
enum class WindowPart { window, minimizeButton, content };

struct ApplicationState {
  RunningApplication identity;
  bool hidden = false;
  bool refusesToHide = false;
  Seconds hidesAfter = 0;  // it was asked to; `never`: not at all
  bool isAskedToHide = false;
  bool refusesObservers = false;
  bool hangs = false;
  Seconds answersAfter = 0;
  std::optional<int> callsUntilQuit;
  std::optional<WindowID> focusedWindow;
};

// Where the Dock is, and how much of the primary display it takes from windows.
enum class DockSide { bottom, left, right, autoHidden };

// A change that an application carries out after its caller has given up.
struct LateWrite {
  Seconds moment = 0;  // `never` while the application hangs
  WindowID window = 0;
  std::string attribute;
  AXValue value;
};

struct LogLine {
  Seconds time = 0;
  LogLevel level = LogLevel::info;
  std::string message;

  bool operator==(const LogLine&) const = default;
};

// A desktop as plain data with the rules of its windows: everything that outlives the program. A
// copy is all that a crash leaves behind. It announces nothing; `System` does.
struct DesktopState {
  Seconds time = 0;             // of the copy
  std::vector<Screen> screens;  // the first is the primary one
  bool areScreensLocked = false;
  DockSide dock = DockSide::bottom;            // of the primary one
  std::vector<ApplicationState> applications;  // in the order of their launch
  std::vector<WindowState> windows;            // front to back, over all applications
  std::optional<ProcessID> frontmost;
  int shownSpace = 1;
  AppKitPoint pointer;
  StoredDefaults defaults;
  std::vector<LogLine> log;
  std::vector<SymbolicHotKey> symbolicHotKeys;
  // Features by key code and modifier flags.
  std::map<std::pair<std::uint16_t, std::uint64_t>, std::string> reservedKeys;
  bool trustsProcess = true;
  bool ignoresActivations = false;
  bool keepsWindowsOnDisplays = false;
  const Texts* texts = &macTexts;
  bool allowsCapture = true;
  bool allowsMonitors = true;
  int trustPrompts = 0;     // how often the system asked the user for the permission
  int captureRequests = 0;  // how often it was to ask for the other one
  Seconds captureDelay = 0;
  std::vector<CaptureFault> captureFaults;
  bool startsAtLogin = false;
  std::optional<SystemError> loginItemFault;  // of the next change
  Updates updates;
  std::vector<std::string> openedURLs;
  bool refusesURLs = false;
  Seconds longestExtraDelay = 0;    // of every Accessibility call, by seed
  Seconds longestAnnouncement = 0;  // of every notification on its way, by seed
  double faultProbability = 0;      // of every Accessibility call, by seed
  std::vector<AXError> possibleFaults;
  std::vector<AXFault> faults;
  std::vector<LateWrite> lateWrites;
  ProcessID lastPid = 100;
  WindowID lastWindow = 0;
  std::uint64_t uuidsMade = 0;

  ApplicationState* application(ProcessID pid);
  const ApplicationState* application(ProcessID pid) const;
  WindowState* window(WindowID id);
  const WindowState* window(WindowID id) const;

  // Front to back, minimized ones last.
  std::vector<WindowID> windowsOf(ProcessID pid) const;
  bool isOnOtherSpace(const WindowState& window) const;
  bool isVisible(const WindowState& window) const;
  // Whether it is visible and some of it lies on a display.
  bool isOnScreen(const WindowState& window) const;
  std::optional<WindowID> windowAt(QuartzPoint point) const;
  // In the middle of the main screen's visible frame.
  QuartzRect centred(Size size) const;
  // What of the window lies at a point inside its frame.
  WindowPart partAt(const WindowState& window, QuartzPoint point) const;
  // Of the window that has the keyboard.
  std::optional<WindowID> focusedWindow() const;

  ProcessID launch(RunningApplication identity);
  // Closes its windows; another application becomes the frontmost one.
  void endApplication(ProcessID pid);
  void hide(ProcessID pid);
  void unhide(ProcessID pid);
  void activate(ProcessID pid);
  // If it is the frontmost application, another one takes its place.
  void resign(ProcessID pid);

  // The error ordered for the next call of this kind, if there is one.
  std::optional<SystemError> takeCaptureFault(CaptureCall call);

  // A new window in front; its application becomes active if it is a regular one.
  WindowID open(WindowState window);
  void close(WindowID id);
  // The next window of the application gets the focus.
  void minimize(WindowID id) { minimize(id, Actor::user); }
  void minimize(WindowID id, Actor actor);
  void unminimize(WindowID id);
  // Its place in the menu "Window" or in the Dock: back, in front, and its application active.
  void choose(WindowID id);
  // In front of the other windows of its application, and of all if that is the frontmost one.
  void raise(WindowID id);
  // Changes an attribute as the window's manners have it.
  std::expected<void, AXError> write(WindowID id, std::string_view attribute, const AXValue& value);
  void carryOutLateWrites(Seconds now);
  // It hung; what it was asked meanwhile becomes due.
  void wake(ProcessID pid, Seconds now);

  // Between Quartz and AppKit space, about the primary display.
  Flip flip() const;
  QuartzPoint toQuartz(AppKitPoint point) const;
  AppKitPoint toAppKit(QuartzPoint point) const;
  // The screen that holds most of the rectangle, else the primary one.
  const Screen* screenOf(const QuartzRect& rect) const;
  const Screen* mainScreen() const;
  // From 0 to 1; displays that overlap count twice.
  double shareOnDisplays(const QuartzRect& rect) const;
  void plug(Screen screen);
  // As on a Mac, the next display becomes the primary one if need be, and windows that no longer
  // touch a display come to the primary one.
  void unplug(DisplayID display);
  void moveDock(DockSide side);

 private:
  void move(WindowID id, QuartzPoint asked);
  QuartzPoint placeTaken(const WindowState& window, QuartzPoint asked) const;
  QuartzPoint clamped(const QuartzRect& frame) const;
  void bringToFront(WindowID id);
  void focusNext(ProcessID pid);
  void beginAtPrimary();
};

// What the button and the content of a window cover.
QuartzRect frameOf(WindowPart part, const QuartzRect& window);
// Of a window with a content of this size.
Size sizeAround(Size content);

// A display with a menu bar of 25 points at the top and no Dock.
Screen makeScreen(DisplayID display, AppKitRect frame);

}  // namespace pellow::simulated
