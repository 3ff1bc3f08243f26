#include "platforms/linux/qt/screen_geometry.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace pellow {

QRect toQt(const PixelRect& rect) {
  const QPoint centre(rect.x + rect.width / 2, rect.y + rect.height / 2);
  const QScreen* screen = QGuiApplication::primaryScreen();
  for (const auto* candidate : QGuiApplication::screens()) {
    const QRect area(candidate->geometry().topLeft(),
                     candidate->geometry().size() * candidate->devicePixelRatio());
    if (area.contains(centre)) screen = candidate;
  }
  if (!screen) return {rect.x, rect.y, rect.width, rect.height};
  const double scale = screen->devicePixelRatio();
  const auto corner = screen->geometry().topLeft();
  const auto points = [&](int pixels) { return static_cast<int>(std::lround(pixels / scale)); };
  return {corner.x() + points(rect.x - corner.x()), corner.y() + points(rect.y - corner.y()),
          points(rect.width), points(rect.height)};
}

QPointF toPixels(QPointF point) {
  const QScreen* screen = QGuiApplication::screenAt(point.toPoint());
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return point;
  const QPointF corner = screen->geometry().topLeft();
  return corner + (point - corner) * screen->devicePixelRatio();
}

}  // namespace pellow
