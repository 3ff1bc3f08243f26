#pragma once

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/geometry.h"
#include "base/task.h"
#include "base/texts.h"
#include "platform/image.h"
#include "platform/queues.h"
#include "platform/screen_capture.h"
#include "platform/system_error.h"

namespace pellow {

// Still pictures of single windows of other applications. Accessibility, which names the window,
// and the capture interface share no identifier, so the window is found again by its process, title
// and frame. Main thread.
class WindowCapture {
 public:
  WindowCapture(ScreenCapture& screenCapture, MainQueue& mainQueue, const Texts& texts)
      : screenCapture_(screenCapture), mainQueue_(mainQueue), texts_(texts) {}

  // A picture of a window on the screen, one pixel for a point; `title` and `frame` as
  // Accessibility reports them. The error is a sentence. No answer within 2 s is a failure, since
  // windows wait for their pictures. Several captures may run at once.
  Task<std::expected<Image, SystemError>> capture(ProcessID pid, std::string title,
                                                  QuartzRect frame);

  // How well a window fits the one looked for: 4 for its origin and 2 for its size, both within 2
  // points, and 3 for its title, unless `title` is empty.
  static int score(const ShareableWindow& window, std::string_view title, const QuartzRect& frame);

  // The first window with the highest score, if that is above 3: neither title nor size alone
  // identifies a window.
  static std::optional<ShareableWindow> bestMatch(std::span<const ShareableWindow> windows,
                                                  std::string_view title, const QuartzRect& frame);

 private:
  ScreenCapture& screenCapture_;
  MainQueue& mainQueue_;
  const Texts& texts_;
};

}  // namespace pellow
