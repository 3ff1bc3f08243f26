#pragma once

#include <mutex>
#include <optional>
#include <vector>

#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// The buttons of title bars that applications draw into their own windows, as the applications tell
// assistive programs. Any thread.
class HeaderBars {
 public:
  // In pixels of the X screen, those of each side from the side inwards.
  struct Buttons {
    std::vector<PixelRect> left;
    std::vector<PixelRect> right;
  };

  explicit HeaderBars(X11Server& server) : server_(server) {}

  // Of a window whose state and frame are known. Nothing when no accessibility bus runs, or the
  // application is not on it or has told nothing after half of the time until the deadline.
  // Remembers every answer for some seconds, even that there was none.
  std::optional<Buttons> buttons(const WindowFacts& window, Deadline deadline);

 private:
  struct Reading {
    WindowKey window;
    std::optional<Buttons> buttons;  // from the top left of the content
    PixelSize size;                  // of the content
    Deadline expiry;
  };

  std::optional<Buttons> ask(const WindowFacts& window, Deadline deadline);

  X11Server& server_;
  std::mutex mutex_;
  std::vector<Reading> readings_;
};

}  // namespace pellow
