#pragma once

#include <map>
#include <mutex>
#include <optional>

#include "platforms/linux/x11/button_layout.h"
#include "platforms/linux/x11/header_bar.h"
#include "platforms/linux/x11/pixel_rect.h"
#include "platforms/linux/x11/x11_server.h"

namespace pellow {

struct TitleBarStyle;

// Finds the minimize button in the title bars that the running window manager puts around windows,
// and in those that GTK applications draw into their own.
//
//   openbox, xfwm4, icewm     the button is a window of the frame, known by its name or by its
//                             place among its siblings, which is the same in every layout
//   fluxbox                   a window of the frame too, told apart by the layout in its settings
//   metacity, marco, KWin,    painted: computed from the size of the title bar and the layout in
//   all others                the settings, or the default one; its middle is right, while its
//                             edges vary by some pixels with the theme
//   GTK header bars           where the application says its buttons are, told apart by the layout;
//                             where it says nothing, those of the usual theme in the windows of GTK
//                             applications, and none in others: Chromium, Electron and Firefox put
//                             theirs where nobody can tell
//
// Any thread. Rereads settings after some seconds; never waits past the deadline.
class TitleBars {
 public:
  explicit TitleBars(X11Server& server) : server_(server), headerBars_(server) {}

  // In pixels of the X screen; nothing when the window is gone, has no such button or may not be
  // minimized.
  std::optional<PixelRect> minimizeButton(xcb_window_t client, Deadline deadline);

 private:
  struct Reading {
    ButtonLayout layout;
    Deadline expiry;
  };

  // The layout of a style as it was last read in time; one without buttons before that.
  ButtonLayout layoutOf(const TitleBarStyle& style, Deadline deadline);

  X11Server& server_;
  HeaderBars headerBars_;
  std::mutex mutex_;
  std::map<const TitleBarStyle*, Reading> readings_;
};

}  // namespace pellow
