#pragma once

#include "platform/screen_capture.h"

namespace pellow {

// ScreenCaptureKit and the permission that the system asks for with it. A permission given while
// the process runs may count only from its next launch.
class MacScreenCapture final : public ScreenCapture {
 public:
  bool preflightAccess() const override;
  void requestAccess() override;
  Subscription shareableWindows(OnWindows onWindows) override;
  Subscription captureImage(const ShareableWindow& window, int pixelWidth, int pixelHeight,
                            OnImage onImage) override;
  Subscription captureDisplay(DisplayID display, OnDisplay onDisplay) override;
};

}  // namespace pellow
