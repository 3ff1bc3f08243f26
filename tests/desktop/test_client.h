#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tests/desktop/desktop_session.h"

namespace pellow::desktop {

// An application of our own with plain windows that do as they are told. Its icon is the left half
// `iconLeft` and the right half `iconRight`.
class TestClient {
 public:
  static constexpr std::uint32_t iconLeft = 0xd02090;
  static constexpr std::uint32_t iconRight = 0x20b040;
  static constexpr int shadow = 24;

  explicit TestClient(DesktopSession& desktop, std::string windowClass = "Testclient");

  // Opens a window with this place of its frame and size of its content, and makes it active.
  WindowID open(std::string_view title, PixelRect place);
  // The same for a dialog that belongs to `owner`.
  WindowID openDialog(std::string_view title, PixelRect place, WindowID owner);

  // The same without any decoration; and one that draws its decoration itself, with a shadow of
  // `shadow` pixels around `place`.
  WindowID openUndecorated(std::string_view title, PixelRect place);
  WindowID openWithShadow(std::string_view title, PixelRect place);
  // Opens a dock along the top of the X screen that keeps the space below it for itself.
  WindowID openDock(PixelRect place);

  void setTitle(WindowID window, std::string_view title);
  // Asks the window manager for the maximized or the full-screen state.
  void maximize(WindowID window);
  void maximizeVertically(WindowID window);
  void makeFullScreen(WindowID window);
  // Destroys the window, and waits for nothing.
  void destroy(WindowID window);

  const std::string& windowClass() const { return windowClass_; }
  ChildProcess& process() { return *process_; }

 private:
  WindowID open(const std::string& command);
  WindowID openManaged(const std::string& command);
  void tell(const std::string& command);

  DesktopSession& desktop_;
  std::string windowClass_;
  std::unique_ptr<ChildProcess> process_;
};

}  // namespace pellow::desktop
