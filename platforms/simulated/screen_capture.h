#pragma once

#include <optional>

#include "platform/screen_capture.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// Pictures of what is on the displays. Lists and pictures are made after the desktop's capture
// delay, from the desktop as it is by then; each picture is an image that says what it shows
// (`windowPicture`).
//
// The list has the windows of applications, front to back, then the desktop itself, one window
// without owner and title for every display. The picture of a display shows windows as rectangles:
// a grey title bar above the colour of the content.
class ScreenCapture final : public pellow::ScreenCapture {
 public:
  explicit ScreenCapture(System& system) : system_(system) {}

  bool preflightAccess() const override { return system_.state.allowsCapture; }
  void requestAccess() override;
  Subscription shareableWindows(OnWindows onWindows) override;
  Subscription captureImage(const ShareableWindow& window, int pixelWidth, int pixelHeight,
                            OnImage onImage) override;
  Subscription captureDisplay(DisplayID display, OnDisplay onDisplay) override;

  // The permission.
  void allow(bool allowed) { system_.state.allowsCapture = allowed; }
  // How often the system was to ask the user for it.
  int requests() const { return system_.state.captureRequests; }
  // Answers after this time with what is there by then; `never`: not at all.
  void answersAfter(Seconds delay) { system_.state.captureDelay = delay; }
  // The next call of this kind, or of any, answers with the error.
  void failNext(SystemError error, std::optional<CaptureCall> call = std::nullopt);

 private:
  std::expected<std::vector<ShareableWindow>, SystemError> windowsNow() const;
  struct Subject;
  std::optional<QuartzRect> frameNow(const Subject& subject) const;
  std::expected<Image, SystemError> imageNow(const Subject& subject, int pixelWidth,
                                             int pixelHeight) const;
  std::expected<DisplayPicture, SystemError> displayNow(DisplayID display) const;

  System& system_;
};

}  // namespace pellow::simulated
