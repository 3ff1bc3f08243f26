#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/handler_list.h"
#include "platform/workspace.h"
#include "platforms/linux/system/file_descriptor.h"
#include "platforms/linux/x11/active_window.h"
#include "platforms/linux/x11/desktop_entries.h"
#include "platforms/linux/x11/keyboard_rest.h"
#include "platforms/linux/x11/window_events.h"
#include "platforms/linux/x11/window_manager.h"

namespace pellow {

// Applications are the processes that own windows in the window manager's list. One that has closed
// its last window is no longer an application, but has ended only when its process has. It counts
// as launched with its first window for the taskbar, so that a splash screen tells nobody a wrong
// policy.
class X11Workspace : public Workspace {
 public:
  using LoadIcon = std::function<std::optional<Image>(const std::string& iconName)>;

  // `pollSet` is an epoll descriptor that the desktop waits on, for processes that are about to
  // end.
  X11Workspace(X11Server& server, WindowManager& windowManager, WindowEvents& windowEvents,
               ActiveWindow& activeWindow, int pollSet, LoadIcon loadIcon);

  std::vector<RunningApplication> runningApplications() override;
  std::optional<RunningApplication> application(ProcessID pid) override;
  std::optional<ProcessID> frontmostApplication() override;
  bool hide(ProcessID pid) override;
  bool unhide(ProcessID pid) override;
  bool activate(ProcessID pid) override;
  void activateDesktop() override { keyboardRest_.take(); }
  std::vector<WindowOnScreen> windowsOnScreen() override;
  bool keepsWindowsOnDisplays() override;
  bool hasWindowsOnOtherSpaces(ProcessID pid) override;
  bool open(std::string_view url) override;
  Subscription onDidActivateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidBecomeRegular(std::function<void(ProcessID)> observer) override;
  Subscription onDidTerminateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidChangeActiveSpace(std::function<void()> observer) override;

  // Another desktop is shown.
  void currentDesktopChanged() { spaceObservers_.notify(); }
  // The list of clients has changed.
  void windowsChanged();
  // A descriptor in the poll set is ready.
  void processEnded();

 private:
  using Windows = std::vector<WindowFacts>;
  // A window that was iconified with its application, or was asked to be.
  struct HiddenWindow {
    Subscription watch;
    bool isToShow = false;  // its application could not be hidden: it comes back, should it follow
  };

  Windows windowsOf(ProcessID pid, Facet facets) const;
  RunningApplication describe(ProcessID pid, const Windows& own);
  RunningApplication thisProcess() const;
  std::optional<Image> icon(const DesktopEntry* entry, ProcessID pid, xcb_window_t window);
  std::optional<Image> themeIcon(const std::string& name);
  using Owners = std::map<xcb_window_t, ProcessID>;
  Owners ownersOf(const std::vector<xcb_window_t>& windows) const;
  void keepClientsWithoutProcess(Owners& now) const;
  void notice(const Owners& now);
  // Windows of an application that could not be hidden.
  void takeBack(const std::vector<WindowKey>& windows);
  void showAgain(const std::vector<WindowKey>& windows);
  void markHidden(xcb_window_t window, bool isHidden);
  void watchHidden(xcb_window_t window);
  // Mapping one window of a hidden application, by a taskbar for example, unhides all of it. One
  // that follows when its application could not be hidden comes back.
  void hiddenWindowChanged(xcb_window_t window);
  void watchForEnd(ProcessID pid);
  void end(ProcessID pid);

  X11Server& server_;
  WindowManager& windowManager_;
  WindowEvents& windowEvents_;
  const int pollSet_;
  LoadIcon loadIcon_;
  KeyboardRest keyboardRest_{server_};
  DesktopEntries entries_ = DesktopEntries::ofEnvironment();
  std::map<std::string, std::optional<Image>> themeIcons_;
  std::map<ProcessID, Image> windowIcons_;  // of applications that the theme does not know
  // Of the windows in the list, without this process; those of clients without a process as long as
  // they exist.
  Owners owners_;
  std::set<ProcessID> withWindows_;
  std::set<ProcessID> regular_;
  std::map<ProcessID, FileDescriptor> leaving_;  // without windows, still alive
  std::map<xcb_window_t, HiddenWindow> hidden_;
  Subscription activeWatch_;
  HandlerList<void(ProcessID)> activationObservers_;
  HandlerList<void(ProcessID)> regularObservers_;
  HandlerList<void(ProcessID)> terminationObservers_;
  HandlerList<void()> spaceObservers_;
};

}  // namespace pellow
