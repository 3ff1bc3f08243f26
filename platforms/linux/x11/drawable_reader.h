#pragma once

#include <expected>

#include "platforms/linux/x11/pixels.h"
#include "platforms/linux/x11/x11_connection.h"

namespace pellow {

// Copies what a drawable shows: through memory shared with the X server if both are on one machine,
// else over the connection. For one thread.
class DrawableReader {
 public:
  explicit DrawableReader(X11Connection& connection);

  // Whether drawables of this depth can be read: those with 24 bits of colour, with alpha or
  // without.
  bool canRead(std::uint8_t depth) const;

  // The part lies inside the drawable and is not empty. Opaque where the depth has no alpha.
  std::expected<Pixels, AXError> read(xcb_drawable_t drawable, std::uint8_t depth,
                                      const PixelRect& part, Deadline deadline);

 private:
  // False when the server cannot share memory with this process, or nothing is there to read.
  bool readShared(xcb_drawable_t drawable, const PixelRect& part, Pixels& pixels,
                  Deadline deadline);

  X11Connection& connection_;
  const bool canShare_;
};

}  // namespace pellow
