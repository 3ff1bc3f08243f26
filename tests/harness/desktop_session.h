#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/window_manager_choice.h"

// A private desktop for a test: a virtual X server, a window manager, and the test's own
// connection, which types, points and looks at everything from outside.

namespace pellow::desktop {

using WindowID = std::uint32_t;  // an X window; 0 is none
using KeySym = std::uint32_t;    // for a letter its lower-case ASCII code

namespace key {
inline constexpr KeySym tab = 0xff09;
inline constexpr KeySym returnKey = 0xff0d;
inline constexpr KeySym escape = 0xff1b;
inline constexpr KeySym up = 0xff52;
inline constexpr KeySym down = 0xff54;
inline constexpr KeySym f4 = 0xffc1;
inline constexpr KeySym shift = 0xffe1;
inline constexpr KeySym control = 0xffe3;
inline constexpr KeySym alt = 0xffe9;
inline constexpr KeySym super = 0xffeb;
}  // namespace key

// Whole pixels, y down from the top left of the X screen.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  bool operator==(const PixelRect&) const = default;
};

std::ostream& operator<<(std::ostream& out, const PixelRect& rect);

// Part of what the screen shows.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;  // 0xRRGGBB, row by row

  std::uint32_t at(int x, int y) const { return pixels.at(std::size_t(y) * width + x); }
  // How many pixels have this colour, give or take what a fading leaves: mutter ends at an opacity
  // of 254 in 255.
  int count(std::uint32_t colour) const;
  // As a portable pixmap.
  void write(const std::filesystem::path& file) const;
};

struct DesktopOptions {
  int width = 1280;
  int height = 800;
  // An empty command: a bare server.
  Manager windowManager = chosenManager();
  // Further ones, for example {"-extension", "X-Resource"}.
  std::vector<std::string> serverArguments = {};
};

// The test's main thread. Throws std::runtime_error with the reason when something cannot be set
// up.
class DesktopSession {
 public:
  // Returns once the window manager manages.
  explicit DesktopSession(DesktopOptions options = {});
  // Stops everything.
  ~DesktopSession();
  DesktopSession(const DesktopSession&) = delete;
  DesktopSession& operator=(const DesktopSession&) = delete;

  // For example ":12".
  const std::string& display() const { return display_; }
  PixelRect screen() const { return content(root_); }
  // The screen without the bars of the window manager.
  PixelRect workArea() const;

  // The environment of programs of this desktop: its DISPLAY, and folders of their own for HOME,
  // XDG_CONFIG_HOME and XDG_RUNTIME_DIR.
  Environment environment() const;
  std::filesystem::path configHome() const { return folder_ / "home" / ".config"; }
  std::filesystem::path runtimeFolder() const { return folder_ / "runtime"; }

  // Starts a program on this desktop; `changes` go over `environment()`.
  std::unique_ptr<ChildProcess> start(const std::vector<std::string>& command,
                                      const Environment& changes = {}) const;
  // The session bus at the address in `environment()`; it ends with the result.
  std::unique_ptr<ChildProcess> startSessionBus() const;

  // Starts this window manager to take over from the running one; returns once it manages.
  void replaceWindowManager(Command command);
  // Kills the window manager and starts it again.
  void restartWindowManager();
  ChildProcess& windowManager() { return *windowManager_; }
  ChildProcess& server() { return *server_; }
  WindowID root() const { return root_; }

  // Kills the server in the middle of everything; ask nothing of this desktop afterwards.
  void killServer();

  // The windows that the window manager manages, oldest first; the same from bottom to top.
  std::vector<WindowID> clients() const { return values(root_, "_NET_CLIENT_LIST"); }
  std::vector<WindowID> stacking() const { return values(root_, "_NET_CLIENT_LIST_STACKING"); }
  WindowID activeWindow() const;

  // The windows on the screen whose WM_CLASS holds this class and instance name.
  std::vector<WindowID> shownWindows(std::string_view windowClass, std::string_view name) const;

  bool exists(WindowID window) const;
  // Neither minimized nor otherwise taken off the screen; it may be beyond its edge.
  bool isShown(WindowID window) const;

  // The window with the decoration around it, but without the shadow that it draws itself, and the
  // plain window; all 0 when it is gone.
  PixelRect frame(WindowID window) const;
  PixelRect content(WindowID window) const;

  // A property as 32-bit values or as bytes; empty when it is not set or the window is gone.
  std::vector<std::uint32_t> values(WindowID window, std::string_view property) const;
  std::string bytes(WindowID window, std::string_view property) const;

  // Whether "_NET_WM_STATE" holds the state, for example "_NET_WM_STATE_HIDDEN".
  bool hasState(WindowID window, std::string_view state) const;
  // Whether the window manager says that it knows this hint.
  bool supports(std::string_view hint) const;

  // Whether what is typed goes to this window or to something in it.
  bool hasKeyboard(WindowID window) const;

  // As people see it, whoever paints the screen.
  Picture picture(PixelRect part) const;
  // Waits until no animation is left that the next act could interrupt.
  [[nodiscard]] bool standsStill() const;

  // Presses the keys in this order and releases them in reverse.
  void type(std::initializer_list<KeySym> chord);
  // Presses the key for a second, in which the server repeats it some ten times.
  void hold(KeySym keySym);
  void movePointer(int x, int y) { fakeInput(XCB_MOTION_NOTIFY, 0, x, y); }
  // The button goes down or up where the pointer is; 1 is the left one, 3 the right one.
  void press(std::uint8_t button = 1) { fakeInput(XCB_BUTTON_PRESS, button); }
  void release(std::uint8_t button = 1) { fakeInput(XCB_BUTTON_RELEASE, button); }
  // Moves the pointer there and clicks the button.
  void click(int x, int y, std::uint8_t button = 1);

  // Asks the window manager, as a pager does, to activate the window, and waits until it is.
  bool activate(WindowID window, std::chrono::seconds bound = std::chrono::seconds(30));

  // Asks the window manager, as a pager does, to close or iconify the window; to add a state, for
  // example "_NET_WM_STATE_SHADED", or to take it away. Waits for nothing.
  void close(WindowID window);
  void iconify(WindowID window);
  void changeState(WindowID window, std::string_view state, bool add);
  // Asks for a window on the desktop with this number, or on all of them. Waits for nothing.
  static constexpr std::uint32_t allDesktops = 0xffffffff;
  void sendToDesktop(WindowID window, std::uint32_t desktop);
  // Asks for the desktop with this number, which is created if need be, or for the bare desktop,
  // and waits until the window manager has followed.
  bool switchTo(std::uint32_t desktop);
  bool showBareDesktop(bool shows);

  // Whether the program behind a window runs its main loop: sends the window a ping and waits for
  // the answer, or until the window is gone.
  bool answersPing(WindowID window);

 private:
  void startServer();
  void connect();
  void startWindowManager();
  void awaitWindowManager(WindowID predecessor);
  void startCompositor();
  WindowID windowManagerCheck() const;
  void seeItManage();

  xcb_atom_t atom(std::string_view name) const;
  void askWindowManager(WindowID window, std::string_view type,
                        std::initializer_list<std::uint32_t> data) const;
  std::vector<WindowID> childrenOf(const std::vector<WindowID>& windows) const;
  void sendMessage(WindowID destination, std::uint32_t mask, WindowID window, std::string_view type,
                   std::initializer_list<std::uint32_t> data) const;
  void fakeInput(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0) const;
  std::uint8_t keycode(KeySym keySym) const;
  void sync() const;

  DesktopOptions options_;
  std::filesystem::path folder_;
  std::string display_;
  std::unique_ptr<ChildProcess> server_;
  std::unique_ptr<ChildProcess> windowManager_;
  std::unique_ptr<ChildProcess> compositor_;
  std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection_{nullptr,
                                                                             xcb_disconnect};
  WindowID root_ = 0;
  std::uint32_t lastPing_ = 0;
};

}  // namespace pellow::desktop
