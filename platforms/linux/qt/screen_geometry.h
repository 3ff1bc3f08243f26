#pragma once

#include <QPointF>
#include <QRect>

#include "platforms/linux/x11/pixel_rect.h"

// Qt keeps the corner of a screen in pixels of the X screen and measures from there in points. Main
// thread, while there is a Qt application.

namespace pellow {

QRect toQt(const PixelRect& rect);
QPointF toPixels(QPointF point);

}  // namespace pellow
