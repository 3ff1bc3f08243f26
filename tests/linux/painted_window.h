#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "tests/harness/desktop_session.h"

namespace pellow::desktop {

// A window that draws itself, on its own connection and thread, whenever the X server asks it to:
// its left half in one colour, its right half in another. It has no background that the server
// could paint instead.
class PaintedWindow {
 public:
  struct Looks {
    std::uint32_t left = 0;   // as a pixel value, with alpha if `hasAlpha`
    std::uint32_t right = 0;  // the same
    bool hasAlpha = false;
    bool isManaged = true;  // otherwise above all others, without a frame
  };

  // Returns when it has drawn itself.
  PaintedWindow(const DesktopSession& desktop, PixelRect place, Looks looks);
  ~PaintedWindow();
  PaintedWindow(const PaintedWindow&) = delete;
  PaintedWindow& operator=(const PaintedWindow&) = delete;

  WindowID id() const { return window_; }
  // Clips the window to this part.
  void shape(PixelRect part);
  // Calls this instead of drawing, on a thread of the window's own.
  void insteadOfDrawing(std::function<void()> act);
  void destroy();

 private:
  void create(PixelRect place);
  void run(const std::stop_token& stop);
  void draw();

  std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection_;
  xcb_screen_t* screen_;
  const PixelRect place_;
  const Looks looks_;
  WindowID window_ = 0;
  std::atomic<int> timesDrawn_ = 0;
  std::mutex mutex_;
  std::function<void()> act_;
  std::jthread thread_;
};

}  // namespace pellow::desktop
