#pragma once

#include <memory>

#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// A question that the window manager answers after everything it was asked before. Both are about a
// window that is never shown. The answer is an event on the connection of the asking thread, which
// outlives the question.
class WindowManagerQuestion {
 public:
  // How large its frame would be. That costs the window manager a good deal of work, and not all
  // answer.
  static std::unique_ptr<WindowManagerQuestion> aboutFrame(X11Server& server);
  // Whether it may grow. The server redirects that to the window manager, which must grant it to
  // windows it does not manage (ICCCM); so all answer.
  static std::unique_ptr<WindowManagerQuestion> aboutSize(X11Server& server);

  WindowManagerQuestion(const WindowManagerQuestion&) = delete;
  WindowManagerQuestion& operator=(const WindowManagerQuestion&) = delete;
  ~WindowManagerQuestion();

  bool isAnsweredBy(const xcb_generic_event_t& event) const;

 private:
  explicit WindowManagerQuestion(X11Connection& connection);

  X11Connection& connection_;
  xcb_window_t window_;
};

// Waits until the window manager has done what anybody has asked of it before, a few seconds at
// most.
void awaitWindowManager(X11Server& server);

}  // namespace pellow
