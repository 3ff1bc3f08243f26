#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/geometry.h"
#include "base/log.h"
#include "platform/ax_element.h"
#include "platform/screens.h"
#include "platform/symbolic_hot_keys.h"
#include "platform/workspace.h"
#include "platforms/simulated/stored_defaults.h"

namespace pellow::simulated {

using WindowID = int;

enum class AXCall { read, write, perform };

// An attribute or action that answers with an error.
struct AXFault {
  std::string name;            // "AXPosition"; empty for every name
  std::optional<AXCall> call;  // absent for every kind
  AXError error = AXError::failure;
  bool once = true;
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

struct WindowState {
  WindowID id = 0;
  ProcessID pid = 0;
  std::string title;
  QuartzRect frame;
  std::string subrole = "AXStandardWindow";
  bool minimized = false;
  WindowManners manners;
};

struct ApplicationState {
  RunningApplication identity;
  bool hidden = false;
  bool refusesToHide = false;
  Seconds answersAfter = 0;
  std::optional<WindowID> focusedWindow;
};

// A change that an application carries out after its caller has given up.
struct LateWrite {
  Seconds moment = 0;
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
// copy is all that a crash leaves behind. It announces nothing; `SimulatedSystem` does.
struct DesktopState {
  Seconds time = 0;                            // of the copy
  std::vector<Screen> screens;                 // the first is the primary one
  std::vector<ApplicationState> applications;  // in the order of their launch
  std::vector<WindowState> windows;            // front to back, over all applications
  std::optional<ProcessID> frontmost;
  AppKitPoint pointer;
  StoredDefaults defaults;
  std::vector<LogLine> log;
  std::vector<SymbolicHotKey> symbolicHotKeys;
  bool trustsProcess = true;
  bool allowsCapture = true;
  bool allowsMonitors = true;
  Seconds longestExtraDelay = 0;  // of every Accessibility call, by seed
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
  bool isVisible(const WindowState& window) const;
  std::optional<WindowID> windowAt(AppKitPoint point) const;
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

  // A new window in front; its application becomes active if it is a regular one.
  WindowID open(WindowState window);
  void close(WindowID id);
  // The next window of the application gets the focus.
  void minimize(WindowID id);
  void unminimize(WindowID id);
  // In front of the other windows of its application, and of all if that is the frontmost one.
  void raise(WindowID id);
  // Changes an attribute as the window's manners have it.
  std::expected<void, AXError> write(WindowID id, std::string_view attribute, const AXValue& value);
  void carryOutLateWrites(Seconds now);

  // Between Quartz and AppKit space, about the primary display.
  Flip flip() const;
  // The screen that holds most of the rectangle, else the primary one.
  const Screen* screenOf(const QuartzRect& rect) const;
  const Screen* mainScreen() const;
  // From 0 to 1; displays that overlap count twice.
  double shareOnDisplays(const QuartzRect& rect) const;
  void plug(Screen screen);
  // As on a Mac the next display becomes the primary one if need be, and windows that touch no
  // display any more come to the primary one.
  void unplug(DisplayID display);

 private:
  void move(WindowID id, QuartzPoint asked);
  QuartzPoint placeTaken(const WindowState& window, QuartzPoint asked) const;
  QuartzPoint clamped(const QuartzRect& frame) const;
  void bringToFront(WindowID id);
  void focusNext(ProcessID pid);
  void beginAtPrimary();
};

// A display with a menu bar of 25 points at the top and, where it is asked for, a Dock of 70 points
// at the bottom.
Screen makeScreen(DisplayID display, AppKitRect frame, bool hasDock);

}  // namespace pellow::simulated
