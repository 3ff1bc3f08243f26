#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/colour.h"
#include "platform/alerts.h"
#include "platform/event_monitors.h"
#include "platform/process.h"
#include "platforms/simulated/application.h"
#include "platforms/simulated/desktop_state.h"
#include "platforms/simulated/open_menu.h"
#include "platforms/simulated/window.h"

namespace pellow::simulated {

class FormWindow;
class Panel;
class Platform;
class StatusItem;

// The desktop in the hands of a test: it plays the user, the other applications, the displays and
// the fate of the process.
//
//   Platform platform;
//   auto& desktop = platform.desktop();
//   const auto notes = desktop.launch("Notes", "com.example.notes");
//   const auto list = notes.openWindow("Shopping", {100, 100, 800, 600});
//   list.answersAfter(0.2);
//   Program program(platform);
//   desktop.press(17, modifier::control | modifier::option | modifier::command);
//   desktop.runUntilQuiet();
//   EXPECT_TRUE(list.isMinimized());
//
// Nothing of the program runs on the main thread but inside `run` and `runUntilQuiet`. What the
// user does, and what the desktop announces, reaches the program there, in order. Main thread; the
// happenings of `after` may call everything but the two.
class Desktop {
 public:
  explicit Desktop(Platform& platform);

  // --- Time

  Seconds now() const;
  // Until nothing is pending but repeating timers and work due later than `horizon` from now. An
  // alert that nobody answers is not pending.
  void runUntilQuiet(Seconds horizon = 60);
  // Everything that comes up in this time, its end included.
  void run(Seconds duration);
  // Something that happens outside of the program, even while its main thread is blocked.
  void after(Seconds delay, std::function<void()> happening);

  // --- Applications and windows

  Application launch(std::string name, std::optional<std::string> bundleID = std::nullopt,
                     ActivationPolicy policy = ActivationPolicy::regular);
  // By name or title; throw when there is none.
  Application application(std::string_view name);
  Window window(std::string_view title);
  // The same window on this desktop, for one named on the desktop before a crash.
  Window counterpart(const Window& window);
  // Of all applications, front to back.
  std::vector<Window> windows();
  std::optional<Application> frontmostApplication();

  // --- Displays: at first one, 1440 × 900, with number 1, a menu bar and a Dock

  const std::vector<Screen>& screens() const;
  // A further display with a menu bar and no Dock.
  void plug(DisplayID display, AppKitRect frame);
  void unplug(DisplayID display);
  // On the primary display, which has it at the bottom at first.
  void moveDock(DockSide side);
  // Menu bar or Dock change in some other way.
  void setVisibleFrame(DisplayID display, AppKitRect visibleFrame);

  // --- The user

  // A key press; it goes to the program when one of its windows has the keyboard.
  void press(std::uint16_t keyCode, std::uint64_t modifierFlags = 0, std::string characters = "");
  // Another application stays active meanwhile; while the program is active it has the keyboard
  // anyway.
  void setProgramHasKeyboard(bool has);
  // `Pointer` has the rules of who gets what the pointer does. A movement between a press
  // and a release is a drag.
  void movePointer(AppKitPoint to);
  void pressPointer(AppKitPoint at);
  void releasePointer();
  // Moves the pointer there and clicks: on a view of a panel, else on a window, which comes to the
  // front, or its minimize button.
  void click(AppKitPoint at);
  // Press, so many movements in a straight line, release.
  void drag(AppKitPoint from, AppKitPoint to, int steps = 10);
  // Opens the context menu of the view there.
  void secondaryClick(AppKitPoint at);
  // Clicks the view at a path of keys, in the front panel of the name; throws when there is none.
  void clickView(const std::string& panel, const std::string& path);

  // Panels of the program with this name that show, front to back.
  std::vector<const Panel*> panels(std::string_view name) const;
  // The only one; throws when there is none, or more.
  const Panel& panel(std::string_view name) const;

  // The menu that is open, read and chosen from by titles: `chooseFromMenu("Size", "40 pt")`. They
  // throw when no menu is open or it has no such item; choosing throws also when the item is
  // disabled or is nothing to choose. A press of the pointer outside of the menu closes it.
  bool menuIsOpen() const;
  // Of the menu, or of a submenu: "✓ 40 pt", "Size ▸", "Gather (disabled)", "—".
  template <class... Titles>
  std::vector<std::string> menuLines(const Titles&... path) const {
    return linesOf(openMenu().menu(std::vector<std::string_view>{path...}));
  }
  template <class... Titles>
    requires(sizeof...(Titles) > 0)
  const MenuItem& menuItem(const Titles&... path) const {
    return openMenu().item(std::vector<std::string_view>{path...});
  }
  template <class... Titles>
    requires(sizeof...(Titles) > 0)
  void chooseFromMenu(const Titles&... path) {
    openMenu().choose(std::vector<std::string_view>{path...});
  }
  void closeMenu();

  // Alerts that show, the oldest first.
  std::vector<Alert> alerts() const;
  // Presses a button of the oldest alert; throws when there is no alert or no such button.
  void choose(std::string_view button);

  // The form window of this name, shown or hidden, to be read and operated; throws when there is
  // none: `formWindow("pellow-settings").choose("When pellowing", "Hide whole app")`.
  FormWindow& formWindow(std::string_view name) const;

  // The program's status item; throws when there is none. Its menu opens in the next run, and is
  // then the menu that is open.
  const StatusItem& statusItem() const;
  void openStatusMenu();

  // The colour panel. Its colour, and all verbs, throw while it does not show.
  bool colourPanelIsOpen() const;
  Colour shownColour() const;
  void pickColour(Colour colour);
  void closeColourPanel();

  // --- The system around the program

  // URLs that the program opened, and whether nothing opens them any more.
  const std::vector<std::string>& openedURLs() const;
  void refuseURLs(bool refuses = true);

  // Whether the system starts the program when the user logs in; the user changes it elsewhere.
  bool startsAtLogin() const;
  void setStartsAtLogin(bool starts);

  // There is a newer version, which the next check finds.
  void publishUpdate(std::string version);
  // The check that the program's schedule has a day after the last one comes now; none when the
  // schedule is switched off.
  void scheduledUpdateCheck();
  // What the framework's own window says about an update: "Pellow 2.1 is available."
  std::optional<std::string> updateWindow() const;
  void closeUpdateWindow();
  // The user installs what that window shows: the program ends. The next one on this desktop has
  // the new version. Throws when it shows no update.
  void installUpdate();
  // What the bundle says; nothing when it does not.
  void setProgramVersion(std::optional<std::string> version);

  // --- User defaults and the log

  void setDefault(std::string_view key, DefaultsValue value);
  // What the program reads, and what a crash at this moment would leave.
  std::optional<DefaultsValue> storedDefault(std::string_view key) const;
  std::optional<DefaultsValue> defaultOnDisk(std::string_view key) const;

  void setSymbolicHotKeys(std::vector<SymbolicHotKey> hotKeys);

  const std::vector<LogLine>& log() const;
  bool hasLogged(std::string_view message) const;

  // --- Faults

  // The next call of this name, on any element, answers with the error. Names are those of
  // attributes, actions and notifications, "pid", "elementAtPosition", or empty for every name.
  void failNext(std::string name, AXError error, std::optional<AXCall> call = std::nullopt);
  // The next immediate write, of this key or of any, answers with the error and is lost in a crash.
  void failNextDefaultsWrite(SystemError error, std::optional<std::string> key = std::nullopt);
  // Every Accessibility call takes up to so long, by seed.
  void delayAnswers(Seconds longest);
  // Every notification about applications and windows is on its way up to so long, by seed; those
  // of one sender arrive in their order.
  void delayAnnouncements(Seconds longest);
  // Every Accessibility call fails with this probability and one of the errors, by seed, besides
  // what else was ordered. 0 ends it.
  void injectFaults(double probability, std::vector<AXError> errors = {AXError::cannotComplete});
  // The permission; without it every Accessibility call answers `apiDisabled` and nothing is heard
  // of elements.
  void setTrusted(bool trusted);
  void allowCapture(bool allowed);
  // How often the system was to ask the user for the one and the other.
  int trustPrompts() const;
  int captureAccessRequests() const;
  // Lists and pictures are answered after this time, and are as the desktop is by then; `never`:
  // not at all.
  void capturesAfter(Seconds delay);
  // The next call of this kind, or of any, answers with the error.
  void failNextCapture(SystemError error, std::optional<CaptureCall> call = std::nullopt);
  void failNextLoginItemChange(SystemError error);
  // Whether event monitors can be added.
  void allowMonitors(bool allowed);

  // --- The process

  // Ends the process unless it has a handler, as it does everywhere.
  void signal(TerminationSignal signal);
  // SIGKILL: nothing of it runs any more and what it calls does nothing.
  void killProcess();
  bool processRuns() const;
  // Of a process that ended by itself.
  std::optional<int> exitStatus() const;
  // What the program does between the end of its main loop and the end of the process.
  void onTerminate(std::function<void()> handler);
  bool isAccessory() const;
  // New instances of the program that it has started, and that wait for its end.
  int launchedInstances() const;
  void failNextLaunch(SystemError error);

  // --- Crashes: a new program starts on a `Platform` made from a copy

  // Calls to ports that could wait or that change something, so far.
  std::uint64_t portCalls() const;
  // The desktop and the user defaults as a crash at this moment would leave them.
  DesktopState snapshot() const;
  // The desktop as it is, to be looked at.
  const DesktopState& state() const;
  // Takes the copy at the beginning of the nth port call from now, counted from 1. The program goes
  // on, on this desktop.
  void crashAtPortCall(std::uint64_t call);
  const std::optional<DesktopState>& crash() const;
  // Called at the beginning of every port call, on its thread; it must not wait.
  void onPortCall(std::function<void(std::uint64_t call)> observer);

  // Port calls as lines of time, thread and call: equal for equal seeds.
  void recordHistory();
  const std::vector<std::string>& history() const;

 private:
  OpenMenu& openMenu() const;

  Platform& platform_;
  System& system_;
};

}  // namespace pellow::simulated
