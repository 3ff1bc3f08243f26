#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "platform/panels.h"

namespace pellow {

// What the window manager and other programs read about the program's own windows. Main thread.
class WindowHints {
 public:
  // `serverAnswers` says whether the X server answers right now.
  explicit WindowHints(std::function<bool()> serverAnswers = [] { return true; });

  // To be asked before a call that waits for the server.
  bool serverAnswers() const { return serverAnswers_(); }

  // WM_CLASS: `name`, for example "pellow-strip", and the class "pellow". For a window that is not
  // mapped yet.
  void setName(xcb_window_t window, const std::string& name) const;

  // Makes a new window a dock, which is neither decorated, placed nor given the focus.
  void makePanel(xcb_window_t window) const;

  // Puts the window on every desktop, off taskbars and pagers, at the level. For a window that is
  // not mapped; window managers forget it when they take a window away.
  void prepareForMapping(xcb_window_t window, PanelLevel level) const;

  // Whether the window manager manages the window (override-redirect). If it does, the frame it
  // adds stops the pointer, whatever the window inside does. For a window that is not mapped.
  void setManaged(xcb_window_t window, bool managed) const;

  // Whether the pointer goes through the window to what lies below.
  void setIgnoresMouseEvents(xcb_window_t window, bool ignores) const;

  // Brings an ordinary window to the front and gives it the keyboard, whatever has it now.
  void activate(xcb_window_t window) const;

  // Whether the window manager keeps only windows of this set in front of it; false while the
  // server does not answer.
  bool isInFront(xcb_window_t window, const std::set<xcb_window_t>& butFor) const;

  // Moves a mapped window to the level.
  void changeLevel(xcb_window_t window, PanelLevel level) const;

 private:
  xcb_atom_t atom(std::string_view name) const;
  void setAtoms(xcb_window_t window, xcb_atom_t property, std::span<const xcb_atom_t> atoms) const;
  void askForState(xcb_window_t window, bool add, xcb_atom_t state) const;
  void ask(xcb_window_t window, xcb_atom_t what, std::array<std::uint32_t, 4> data) const;

  std::function<bool()> serverAnswers_;
  xcb_connection_t* connection_;
  xcb_atom_t state_;
  xcb_atom_t above_;
  xcb_atom_t below_;
  xcb_atom_t sticky_;
  xcb_atom_t skipTaskbar_;
  xcb_atom_t skipPager_;
  xcb_atom_t desktop_;
  xcb_atom_t activeWindow_;
  xcb_atom_t stacking_;
};

}  // namespace pellow
