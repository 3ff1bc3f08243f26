#pragma once

#import <AppKit/AppKit.h>

#include "platform/image.h"

namespace pellow {

// A picture as AppKit holds it: an icon or a picture of a window. Nobody changes the NSImage.
class MacImage final : public Image::Object {
 public:
  explicit MacImage(NSImage* image);  // not nil

  // A bitmap that measures `size` points, however many pixels it has. Keeps the bitmap.
  MacImage(CGImageRef bitmap, Size size);

  Size size() const override { return size_; }
  NSImage* image() const { return image_; }

 private:
  NSImage* image_;
  Size size_;
};

// Every image of this platform is a MacImage.
NSImage* toNSImage(const Image& image);

}  // namespace pellow
