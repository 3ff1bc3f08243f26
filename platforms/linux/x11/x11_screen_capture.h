#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <optional>

#include "platform/queues.h"
#include "platform/screen_capture.h"
#include "platforms/linux/x11/window_photographer.h"

namespace pellow {

struct X11ShareableWindow final : ShareableWindow::Object {
  explicit X11ShareableWindow(xcb_window_t id) : window(id) {}

  const xcb_window_t window;
};

// Pictures of windows through the Composite extension, taken one at a time on a queue of its own.
// X11 asks for no permission: whoever is on the display may take them. The windows are those that
// the window manager has on the current desktop, the front one first; their frames are what
// Accessibility says. A window larger than the part that is asked for in points is averaged down.
class X11ScreenCapture final : public ScreenCapture {
 public:
  X11ScreenCapture(X11Server& server, Queues& queues);
  ~X11ScreenCapture() override;
  X11ScreenCapture(const X11ScreenCapture&) = delete;
  X11ScreenCapture& operator=(const X11ScreenCapture&) = delete;

  bool preflightAccess() const override;
  void requestAccess() override {}
  Subscription shareableWindows(OnWindows onWindows) override;
  Subscription captureImage(const ShareableWindow& window, int pixelWidth, int pixelHeight,
                            OnImage onImage) override;
  Subscription captureDisplay(DisplayID display, OnDisplay onDisplay) override;

 private:
  struct Request;
  template <class Answer>
  struct RequestFor;

  template <class Answer>
  Subscription ask(std::function<Answer()> question, std::function<void(Answer)> onAnswer);
  // What is asked on the queue.
  std::expected<std::vector<ShareableWindow>, SystemError> listWindows();
  std::expected<Image, SystemError> takePicture(xcb_window_t window, PixelSize size);
  std::expected<DisplayPicture, SystemError> takePictureOf(DisplayID display);

  X11Server& server_;
  Queues& queues_;
  std::optional<WindowPhotographer> photographer_;  // of the queue's thread
  std::list<std::shared_ptr<Request>> requests_;    // that have not been answered
  std::unique_ptr<SerialQueue> queue_;              // from the first request on
};

}  // namespace pellow
