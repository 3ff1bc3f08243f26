#include "platforms/macos/foundation/image.h"

#include "platforms/macos/foundation/geometry.h"

namespace pellow {

MacImage::MacImage(NSImage* image) : image_(image), size_(toSize(image.size)) {}

MacImage::MacImage(CGImageRef bitmap, Size size)
    : image_([[NSImage alloc] initWithCGImage:bitmap size:toNSSize(size)]), size_(size) {}

NSImage* toNSImage(const Image& image) {
  return static_cast<const MacImage&>(image.object()).image();
}

}  // namespace pellow
