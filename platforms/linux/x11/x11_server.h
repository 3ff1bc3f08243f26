#pragma once

#include <atomic>
#include <expected>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "platform/ax_element.h"
#include "platforms/linux/x11/screen_layout.h"
#include "platforms/linux/x11/server_hold.h"
#include "platforms/linux/x11/window_manager_traits.h"
#include "platforms/linux/x11/x11_connection.h"

namespace pellow {

// One window, told apart from every other that ever had its XID.
struct WindowKey {
  xcb_window_t window = XCB_WINDOW_NONE;
  std::uint64_t id = 0;  // what _PELLOW_WINDOW_ID says

  bool operator==(const WindowKey&) const = default;
};

// What all parts of the adapter share: a connection for each calling thread, so that none waits for
// another, and what the main thread has learnt and the others read. Any thread.
class X11Server {
 public:
  static std::expected<std::unique_ptr<X11Server>, SystemError> open(
      const std::string& displayName);

  // The calling thread's own connection. One that cannot be opened is returned as a lost one.
  X11Connection& connection();

  // With a hold, the main thread waits for the server only for a moment; without, as long as any.
  void setHold(ServerHold* hold) { hold_ = hold; }
  // Until when the calling thread waits for the server, by itself and at most. What it has found
  // out is whole if that has not passed.
  Deadline patience(Seconds most = serverPatience) const;
  // Whether the calling thread is to ask anything: false while somebody else has the server. What
  // asks much asks this first.
  bool answers();

  const X11Atoms& atoms() const { return atoms_; }

  ScreenLayout layout() const;
  void setLayout(ScreenLayout layout);

  // Whether the running window manager says that it follows a hint.
  bool windowManagerSupports(xcb_atom_t hint) const;
  // What must be known of it.
  const WindowManagerTraits& windowManager() const;
  // What it calls itself.
  std::string windowManagerName() const;
  enum class Compositor { none, windowManager, otherProgram };
  // Who paints the screen.
  Compositor compositor(Deadline deadline);
  // Rereads what the window manager says of itself: false when none runs that follows EWMH, with
  // all that it takes to put windows away.
  bool readWindowManager();
  // What the one that runs lacks for that, for example "_NET_MOVERESIZE_WINDOW".
  std::vector<std::string> windowManagerLacks() const;

  // Whether the window manager that runs has adopted the windows of the one before. Until then,
  // unmanaged windows are not gone: some window managers let go of all windows when another takes
  // over.
  bool isWindowManagerSettled(Deadline deadline);
  // A window manager has announced itself.
  void unsettleWindowManager();
  // The list of clients has changed: true when a new window manager has settled by that.
  bool settleWindowManager(Deadline deadline);

  // The processes that own the windows in the list of clients, known once the main thread has found
  // out and until that list changes: asking the server costs it a look at every client.
  void setOwners(std::map<xcb_window_t, ProcessID> owners);
  std::optional<ProcessID> knownOwner(xcb_window_t window) const;

  // The window that was found around another one, the last time that somebody looked.
  void setParent(xcb_window_t window, xcb_window_t parent);
  xcb_window_t lastParent(xcb_window_t window) const;

  // The window of an application that was raised last.
  void setFrontWindow(ProcessID pid, WindowKey window);
  std::optional<WindowKey> frontWindow(ProcessID pid) const;
  // False when the keys were claimed for this window a moment ago, and no window raised since.
  bool claimKeys(xcb_window_t window);

  // Whether the application was hidden and has not been shown again since; its windows may be
  // minimized, or on another desktop, and tell nothing of that.
  void setHidden(ProcessID pid, bool isHidden);
  bool isHidden(ProcessID pid) const;

  void forgetApplication(ProcessID pid);

 private:
  // A window manager, as told apart from the one before and the one after.
  struct Reign {
    xcb_window_t selectionOwner = XCB_WINDOW_NONE;  // of the selection of window managers
    xcb_window_t check = XCB_WINDOW_NONE;           // the window that proves that it runs

    bool operator==(const Reign&) const = default;
  };

  X11Server(std::string displayName, std::unique_ptr<X11Connection> first);

  // Nothing when none runs.
  std::optional<Reign> reign(Deadline deadline);

  const std::string displayName_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::atomic<ServerHold*> hold_ = nullptr;
  const X11Atoms atoms_;
  const xcb_atom_t windowManagerSelection_;
  const xcb_atom_t compositorSelection_;

  mutable std::mutex mutex_;
  std::map<std::thread::id, std::unique_ptr<X11Connection>> connections_;
  ScreenLayout layout_;
  std::set<xcb_atom_t> supported_;
  std::vector<std::string> lacks_;
  std::string windowManagerName_;
  const WindowManagerTraits* windowManager_ = &traitsOf("");
  std::optional<Reign> settled_;
  std::map<xcb_window_t, ProcessID> owners_;
  std::map<xcb_window_t, xcb_window_t> parents_;
  std::map<ProcessID, WindowKey> frontWindows_;
  xcb_window_t keysClaimedFor_ = XCB_WINDOW_NONE;
  Deadline claimStandsUntil_;
  std::set<ProcessID> hidden_;
};

}  // namespace pellow
