#pragma once

#include <cstdint>

#include "platform/screen_capture.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// Pictures of what is on the displays. Lists and pictures are answered, and made, after the time
// that the desktop has for it, from what the desktop is like by then; each is an image that says
// what it shows (`windowPicture`).
//
// The list has the windows of applications, front to back, then the desktop itself, one window
// without owner and title for every display.
class ScreenCapture final : public pellow::ScreenCapture {
 public:
  explicit ScreenCapture(System& system) : system_(system) {}

  bool preflightAccess() const override { return system_.state.allowsCapture; }
  void requestAccess() override;
  Subscription shareableWindows(OnWindows onWindows) override;
  Subscription captureImage(const ShareableWindow& window, int pixelWidth, int pixelHeight,
                            OnImage onImage) override;

 private:
  std::expected<std::vector<ShareableWindow>, SystemError> windowsNow() const;
  std::expected<Image, SystemError> imageNow(std::uint32_t windowID, int pixelWidth,
                                             int pixelHeight) const;

  System& system_;
};

}  // namespace pellow::simulated
