#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"
#include "platforms/simulated/accessibility.h"
#include "platforms/simulated/alerts.h"
#include "platforms/simulated/application.h"
#include "platforms/simulated/clock.h"
#include "platforms/simulated/colour_panel.h"
#include "platforms/simulated/desktop_state.h"
#include "platforms/simulated/event_monitors.h"
#include "platforms/simulated/files.h"
#include "platforms/simulated/form_windows.h"
#include "platforms/simulated/keyboard.h"
#include "platforms/simulated/login_item.h"
#include "platforms/simulated/open_menu.h"
#include "platforms/simulated/panels.h"
#include "platforms/simulated/pointer.h"
#include "platforms/simulated/probe_windows.h"
#include "platforms/simulated/process.h"
#include "platforms/simulated/queues.h"
#include "platforms/simulated/screen_capture.h"
#include "platforms/simulated/screens.h"
#include "platforms/simulated/status_bar.h"
#include "platforms/simulated/symbolic_hot_keys.h"
#include "platforms/simulated/system.h"
#include "platforms/simulated/system_colours.h"
#include "platforms/simulated/update_framework.h"
#include "platforms/simulated/user_defaults.h"
#include "platforms/simulated/uuid_source.h"
#include "platforms/simulated/window.h"
#include "platforms/simulated/workspace.h"

namespace pellow::simulated {

struct Options {
  std::uint64_t seed = 1;  // one seed, one history
};

// A desktop in memory with one process of the program on it, which it outlives. The test plays the
// user, the other applications, the displays and the fate of the process.
//
//   Desktop desktop;
//   const auto notes = desktop.launch("Notes", "com.example.notes");
//   const auto list = notes.openWindow("Shopping", {100, 100, 800, 600});
//   list.answersAfter(0.2);
//   Program program(desktop);
//   desktop.keyboard().press(17, modifier::control | modifier::option | modifier::command);
//   desktop.runUntilQuiet();
//   EXPECT_TRUE(list.isMinimized());
//
// Each part is one noun: it plays a port for the program and has the verbs of everybody else. The
// program runs on the main thread only inside `run` and `runUntilQuiet`. There it hears what the
// user does and what the desktop announces, in order. Main thread; happenings of `after` may call
// all but these two.
class Desktop final : public pellow::Platform {
 public:
  // Fresh: one display, 1440 × 900, with number 1, a menu bar and a Dock, and no application.
  explicit Desktop(Options options = {});
  // The one that another process left, for the next process.
  explicit Desktop(DesktopState left, Options options = {});

  // --- Parts

  Accessibility& accessibility() override { return accessibility_; }
  Alerts& alerts() override { return alerts_; }
  Clock& clock() override { return clock_; }
  ColourPanel& colourPanel() override { return colourPanel_; }
  EventMonitors& eventMonitors() override { return eventMonitors_; }
  Files& files() override { return files_; }
  FormWindows& formWindows() override { return formWindows_; }
  Keyboard& keyboard() { return keyboard_; }
  const Log& log() override { return log_; }
  LoginItem& loginItem() override { return loginItem_; }
  OpenMenu& menu() { return menu_; }
  Panels& panels() override { return panels_; }
  Pointer& pointer() { return pointer_; }
  ProbeWindows& probeWindows() override { return probeWindows_; }
  Process& process() override { return process_; }
  Queues& queues() override { return queues_; }
  ScreenCapture& screenCapture() override { return screenCapture_; }
  Screens& screens() override { return screens_; }
  StatusBar& statusBar() override { return statusBar_; }
  SymbolicHotKeys& symbolicHotKeys() override { return symbolicHotKeys_; }
  SystemColours& systemColours() override { return systemColours_; }
  const Texts& texts() override { return *system_.state.texts; }
  // Of another system from now on, for a program that is launched then.
  void setTexts(const Texts& texts) { system_.state.texts = &texts; }
  UpdateFramework& updateFramework() override { return updateFramework_; }
  UserDefaults& userDefaults() override { return userDefaults_; }
  UUIDSource& uuidSource() override { return uuidSource_; }
  Workspace& workspace() override { return workspace_; }

  // --- Time

  Seconds now() const { return system_.scheduler.now(); }
  // Until nothing is pending but repeating timers and work due later than `horizon` from now. An
  // alert that nobody answers is not pending.
  void runUntilQuiet(Seconds horizon = 60) { system_.mainLoop.runUntilQuiet(horizon); }
  // Runs everything due in this time, its end included.
  void run(Seconds duration) { system_.mainLoop.run(duration); }
  // Something that happens outside of the program, even while its main thread is blocked.
  void after(Seconds delay, std::function<void()> happening);

  // --- Applications and windows

  Application launch(std::string name, std::optional<std::string> bundleID = std::nullopt,
                     ActivationPolicy policy = ActivationPolicy::regular);
  // By name or title; throw when there is none.
  Application application(std::string_view name);
  Window window(std::string_view title);
  // The same window on this desktop, for one named on the desktop before a crash.
  Window counterpart(const Window& window) { return {system_, window.id()}; }
  // Of all applications, front to back.
  std::vector<Window> windows();
  // Every notification about applications and windows takes up to this long, by seed; those of one
  // sender arrive in order.
  void delayAnnouncements(Seconds longest) { system_.state.longestAnnouncement = longest; }

  // --- Looking back

  // As it is.
  const DesktopState& state() const { return system_.state; }
  // As a crash at this moment would leave it: windows, user defaults as far as they are on disk,
  // nothing of the process. The next one starts on a desktop made from it.
  DesktopState snapshot() const { return system_.snapshot(); }
  const std::vector<LogLine>& logged() const { return system_.state.log; }
  bool hasLogged(std::string_view message) const;

  // Calls to ports that could wait or that change something, so far.
  std::uint64_t portCalls() const { return system_.portCalls; }
  // Called at the beginning of every port call, on its thread; it must not wait.
  void onPortCall(std::function<void(std::uint64_t call)> observer);
  // Port calls as lines of time, thread and call: equal for equal seeds.
  void recordHistory() { system_.recordsHistory = true; }
  const std::vector<std::string>& history() const { return system_.history; }

 private:
  System system_;
  Accessibility accessibility_;
  Alerts alerts_;
  Clock clock_;
  ColourPanel colourPanel_;
  EventMonitors eventMonitors_;
  Files files_;
  FormWindows formWindows_;
  Keyboard keyboard_;
  Log log_;
  LoginItem loginItem_;
  OpenMenu menu_;
  Panels panels_;
  Pointer pointer_;
  ProbeWindows probeWindows_;
  Process process_;
  Queues queues_;
  ScreenCapture screenCapture_;
  Screens screens_;
  StatusBar statusBar_;
  SymbolicHotKeys symbolicHotKeys_;
  SystemColours systemColours_;
  UpdateFramework updateFramework_;
  UserDefaults userDefaults_;
  UUIDSource uuidSource_;
  Workspace workspace_;
};

}  // namespace pellow::simulated
