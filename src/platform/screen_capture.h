#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/geometry.h"
#include "base/subscription.h"
#include "platform/ax_element.h"
#include "platform/image.h"
#include "platform/screens.h"
#include "platform/system_error.h"

namespace pellow {

// A window as the capture interface knows it, which shares no identifier with Accessibility.
struct ShareableWindow {
  // What a platform derives its own windows from: what it needs to take their pictures.
  class Object {
   public:
    virtual ~Object() = default;
  };

  std::shared_ptr<const Object> object;  // never empty in a list of the platform's
  std::optional<ProcessID> owner;
  std::optional<std::string> title;
  QuartzRect frame;

  bool operator==(const ShareableWindow&) const = default;
};

// What a display shows.
struct DisplayPicture {
  // One pixel for a point, to whole numbers.
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;  // 0xRRGGBB in sRGB, row by row from the top

  bool operator==(const DisplayPicture&) const = default;
};

// Pictures of other applications' windows and of displays, and the permission to take them, without
// which calls answer errors or have the system ask the user. Main thread.
class ScreenCapture {
 public:
  virtual ~ScreenCapture() = default;

  // Whether pictures may be taken now; does not ask the user.
  virtual bool preflightAccess() const = 0;

  // Has the system ask the user, unless it did before. Returns at once.
  virtual void requestAccess() = 0;

  using OnWindows =
      std::function<void(std::expected<std::vector<ShareableWindow>, SystemError> windows)>;
  using OnImage = std::function<void(std::expected<Image, SystemError> image)>;

  // The windows on the screen, the desktop's included, in the system's order. Calls `onWindows`
  // once, on the main queue, unless the subscription ends first.
  virtual Subscription shareableWindows(OnWindows onWindows) = 0;

  // A picture of one window of such a list, alone, without what covers it and without the pointer,
  // so many pixels wide and high; the image measures the window's size in points. Calls `onImage`
  // once, on the main queue, unless the subscription ends before.
  virtual Subscription captureImage(const ShareableWindow& window, int pixelWidth, int pixelHeight,
                                    OnImage onImage) = 0;

  using OnDisplay = std::function<void(std::expected<DisplayPicture, SystemError> picture)>;

  // A picture of all that is to be seen on a display, but for the pointer. Calls `onDisplay` once,
  // on the main queue, unless the subscription ends before.
  virtual Subscription captureDisplay(DisplayID display, OnDisplay onDisplay) = 0;
};

}  // namespace pellow
