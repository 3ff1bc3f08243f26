#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/image.h"
#include "platforms/simulated/desktop_state.h"

namespace pellow::simulated {

// What a picture of a window shows, as it was when the picture was taken.
struct WindowPicture {
  std::optional<WindowID> window;  // absent: of the desktop itself
  std::string title;
  QuartzRect frame;
  int pixelWidth = 0;
  int pixelHeight = 0;
  Seconds takenAt = 0;
};

// A picture that nobody draws: its name stands for what it shows.
class NamedImage final : public Image::Object {
 public:
  NamedImage(std::string imageName, Size imageSize)
      : name(std::move(imageName)), size_(imageSize) {}
  explicit NamedImage(WindowPicture shown)
      : name("picture of " + shown.title), picture(std::move(shown)), size_(picture->frame.size) {}

  const std::string name;
  const std::optional<WindowPicture> picture;  // of a window; absent in an icon

  Size size() const override { return size_; }

 private:
  Size size_;
};

// What the picture of a window shows; throws when the image is none.
const WindowPicture& windowPicture(const Image& image);

}  // namespace pellow::simulated
