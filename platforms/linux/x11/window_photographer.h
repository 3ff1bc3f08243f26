#pragma once

#include <expected>
#include <vector>

#include "platform/system_error.h"
#include "platforms/linux/x11/drawable_reader.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// Takes pictures of single windows: of the frame as a user sees it, without client-side shadows,
// without what covers it and without the pointer, transparent where the window is. (Where KWin
// composes the screen, its decoration is only there, and its place in the picture is empty.)
// Without a compositing manager, a window that cannot be seen in full is made to draw itself off
// the screen for a moment; one whose application does not draw in time cannot be photographed. For
// one thread, which it may block for about a second.
class WindowPhotographer {
 public:
  // Uses the calling thread's connection, on which it reads all events.
  explicit WindowPhotographer(X11Server& server);

  // Whether the display can do it.
  static bool isPossible(X11Connection& connection);

  std::expected<Pixels, SystemError> photograph(xcb_window_t window);

 private:
  struct Subject;
  class Coverage;
  class Redirection;
  using Picture = std::expected<Pixels, AXError>;

  std::expected<Subject, SystemError> findSubject(xcb_window_t window, Deadline deadline);
  // What a window that is drawn off the screen shows.
  Picture readRedirected(const Subject& subject, Deadline deadline);
  // What can be seen of a window on the screen. Tells what cannot.
  Picture readScreen(const Subject& subject, Coverage& missing, Deadline deadline);
  // Has a window drawn off the screen until nothing is missing.
  Picture readAfterRepaint(const Subject& subject, Coverage& missing, Deadline deadline);
  void awaitRepaint(const Redirection& redirection, const Subject& subject, Coverage& missing);

  X11Server& server_;
  X11Connection& connection_;
  DrawableReader reader_;
};

}  // namespace pellow
