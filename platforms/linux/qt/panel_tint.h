#pragma once

#include <QColor>
#include <optional>
#include <vector>

#include "platforms/linux/x11/pixel_rect.h"

namespace pellow {

// Dark or light: the colour for a symbol on what most of these parts of the X screen show. Nothing
// when there are none. Main thread, while there is a Qt application.
std::optional<QColor> tintOn(const std::vector<PixelRect>& parts);

}  // namespace pellow
