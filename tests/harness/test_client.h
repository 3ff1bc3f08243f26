#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/harness/desktop_session.h"

namespace pellow::desktop {

// An application of our own with plain windows that do as they are told, each in a colour of its
// own. Its icon is the left half `iconLeft` and the right half `iconRight`.
class TestClient {
 public:
  static constexpr std::uint32_t iconLeft = 0xd02090;
  static constexpr std::uint32_t iconRight = 0x20b040;
  static constexpr int shadow = 24;

  // What a window is filled with, 0xRRGGBB, so that it can be found in a picture of the screen.
  static constexpr std::uint32_t colourOf(WindowID window) { return window * 2654435761U >> 8; }

  explicit TestClient(DesktopSession& desktop, std::string windowClass = "Testclient");

  // Opens a window with its frame at this place and content of this size, and makes it active.
  WindowID open(std::string_view title, PixelRect place) {
    return shown(openManaged("new", title, place));
  }
  // The same for a dialog that belongs to `owner`.
  WindowID openDialog(std::string_view title, PixelRect place, WindowID owner) {
    return shown(openManaged("dialog", title, place, owner));
  }
  // The same without any decoration; and one that draws its decoration itself, with a shadow of
  // `shadow` pixels around `place`.
  WindowID openUndecorated(std::string_view title, PixelRect place) {
    return shown(openManaged("bare", title, place));
  }
  WindowID openWithShadow(std::string_view title, PixelRect place) {
    return shown(openManaged("shadowed", title, place));
  }
  // The same with neither a class nor a process id of its own.
  WindowID openAnonymous(std::string_view title, PixelRect place) {
    return shown(openManaged("anonymous", title, place));
  }
  // One of another type, for example "SPLASH"; or one that stays out of taskbars. Waits only until
  // the window manager has it.
  WindowID openTyped(std::string_view type, std::string_view title, PixelRect place) {
    return openManaged("typed", title, place, type);
  }
  WindowID openSkippingTaskbar(std::string_view title, PixelRect place) {
    return openManaged("skipping", title, place);
  }
  // Opens a dock that reserves its place and everything between it and the side of the X screen:
  // "left", "right", "top" or "bottom".
  WindowID openDock(PixelRect place, std::string_view side = "top") {
    return openManaged("dock", "Dock", place, side);
  }
  // Lets it reserve `depth` pixels along the whole side instead. Waits for nothing.
  void keepSide(WindowID dock, std::string_view side, int depth) {
    tell("strut", dock, side, depth);
  }

  void setTitle(WindowID window, std::string_view title) { tell("title", window, title); }
  // Asks the window manager for the maximized or the full-screen state.
  void maximize(WindowID window) {
    tell("state", window, "_NET_WM_STATE_MAXIMIZED_HORZ _NET_WM_STATE_MAXIMIZED_VERT");
  }
  void maximizeVertically(WindowID window) {
    tell("state", window, "_NET_WM_STATE_MAXIMIZED_VERT");
  }
  void makeFullScreen(WindowID window) { tell("state", window, "_NET_WM_STATE_FULLSCREEN"); }
  // Waits for nothing.
  void destroy(WindowID window) { tell("destroy", window); }

  // Closes the connection to the server with all windows. The windows that it opens from now on get
  // the same XIDs again.
  void reconnect() { tell("reconnect"); }
  // Returns once it has grabbed the server, for this many milliseconds.
  void grabServer(int milliseconds);
  // Makes windows come and go in no time, twice as many as `rounds`; `awaitCalm` waits for the end.
  void storm(int rounds) { tell("storm", rounds); }
  void awaitCalm() { awaitAnswer("calm"); }

  const std::string& windowClass() const { return windowClass_; }
  ChildProcess& process() { return *process_; }

 private:
  // A window of a kind, with `detail` before its place; returns when the window manager has it.
  WindowID openManaged(std::string_view kind, std::string_view title, PixelRect place,
                       const auto&... detail) {
    tell(kind, detail..., place.x, place.y, place.width, place.height, title);
    return awaitWindow();
  }
  WindowID awaitWindow();
  // Makes it active.
  WindowID shown(WindowID window);
  // The words of one line.
  void tell(std::string_view command, const auto&... words) {
    std::ostringstream line;
    line << command;
    ((line << ' ' << words), ...);
    process_->writeLine(line.str());
  }
  // Waits for the line that begins like this and returns what follows.
  std::string awaitAnswer(std::string_view beginning);

  DesktopSession& desktop_;
  std::string windowClass_;
  std::unique_ptr<ChildProcess> process_;
};

}  // namespace pellow::desktop
