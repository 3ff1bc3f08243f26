#pragma once

#include <functional>
#include <memory>

#include "platforms/linux/x11/window_manager_question.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// What changes when the window manager does something with a window.
inline constexpr Facet placeFacets = Facet::state | Facet::frame;

// How long a window manager may take for one step.
inline constexpr Seconds stepPatience = 0.25;

// Hears of everything that happens to a window, but only while somebody waits for it: a connection
// that always listened would always have to be read. Selecting events follows the requests that the
// caller has made before, and the first look follows that, so nothing is missed. One thread, which
// has one watch at a time.
class WindowWatch {
 public:
  using Condition = std::function<bool(const WindowFacts&)>;

  WindowWatch(X11Server& server, const WindowKey& window);
  WindowWatch(const WindowWatch&) = delete;
  WindowWatch& operator=(const WindowWatch&) = delete;
  ~WindowWatch();

  // Waits for the next changes; false when none come.
  bool wait(Deadline deadline);

  // Waits for changes until one look at the window fulfils the condition, `patience` at most from
  // the first look on; answers the last look, whether it does or not.
  std::expected<WindowFacts, AXError> lookUntil(Facet facets, Seconds patience, Deadline deadline,
                                                const Condition& condition);

  // A look that fulfils the condition, or else one after the window manager has done what it was
  // asked before, or has had the time to.
  std::expected<WindowFacts, AXError> lookAfterManagerActed(Deadline deadline,
                                                            const Condition& isDone);
  // Whether the window manager has said that it has done what it was asked before.
  bool hasManagerActed() const { return isAnswered_; }

 private:
  void select(xcb_window_t window, std::uint32_t mask);
  // Whether it may tell of a change of the window.
  bool take(const xcb_generic_event_t& event);

  X11Server& server_;
  X11Connection& connection_;
  const WindowKey window_;
  xcb_window_t frame_ = XCB_WINDOW_NONE;
  std::unique_ptr<WindowManagerQuestion> question_;
  bool isAnswered_ = false;
};

}  // namespace pellow
