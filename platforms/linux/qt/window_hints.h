#pragma once

#include <xcb/xcb.h>

#include <span>
#include <string>
#include <string_view>

#include "platform/panels.h"

namespace pellow {

// What the window manager and other programs read about the program's own windows. Main thread.
class WindowHints {
 public:
  WindowHints();

  // WM_CLASS: `name`, for example "pellow-strip", and the class "pellow". For a window that is not
  // mapped yet.
  void setName(xcb_window_t window, const std::string& name) const;

  // Makes a new window a dock, which is neither decorated, placed nor given the focus.
  void makePanel(xcb_window_t window) const;

  // Makes the window stand on every desktop, outside of taskbars and pagers, at the level. For a
  // window that is not mapped; window managers forget it when they take a window away.
  void prepareForMapping(xcb_window_t window, PanelLevel level) const;

  // Moves a mapped window to the level.
  void changeLevel(xcb_window_t window, PanelLevel level) const;

 private:
  xcb_atom_t atom(std::string_view name) const;
  void setAtoms(xcb_window_t window, xcb_atom_t property, std::span<const xcb_atom_t> atoms) const;
  void askForState(xcb_window_t window, bool add, xcb_atom_t state) const;

  xcb_connection_t* connection_;
  xcb_atom_t state_;
  xcb_atom_t above_;
  xcb_atom_t below_;
  xcb_atom_t sticky_;
  xcb_atom_t skipTaskbar_;
  xcb_atom_t skipPager_;
  xcb_atom_t desktop_;
};

}  // namespace pellow
