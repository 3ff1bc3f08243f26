#include "platforms/linux/qt/template_icon.h"

#include <QPainter>
#include <QPixmap>
#include <QWidget>
#include <algorithm>
#include <optional>

#include "platforms/linux/qt/panel_tint.h"
#include "platforms/linux/qt/screen_geometry.h"
#include "platforms/linux/qt/symbol_pixmap.h"

namespace pellow {
namespace {

constexpr double badgeShare = 0.4;  // of the picture's side
constexpr double gapShare = 0.07;   // around the badge

// A tray shows our window in the middle of its panel, so the window's corner, which the picture
// leaves free, shows the panel's colour.
std::optional<QColor> tintInTray(const QPaintDevice* device) {
  const auto* const window = dynamic_cast<const QWidget*>(device);
  if (!window) return std::nullopt;
  const auto corner = toPixels(QPointF(window->mapToGlobal(QPoint(0, 0)))).toPoint();
  return tintOn({PixelRect{corner.x(), corner.y(), 1, 1}});
}

}  // namespace

QPixmap TemplateIcon::draw(int side, const QColor& colour) const {
  auto pixmap = symbolPixmap(image_.symbol, colour, side, 1);
  if (!image_.isBadged || pixmap.isNull()) return pixmap;
  const double diameter = badgeShare * side;
  const QRectF badge(side - diameter, 0, diameter, diameter);
  const double gap = gapShare * side;
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setCompositionMode(QPainter::CompositionMode_Clear);
  painter.setBrush(Qt::black);
  painter.drawEllipse(badge.adjusted(-gap, -gap, gap, gap));
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  painter.setBrush(colour);
  painter.drawEllipse(badge);
  return pixmap;
}

void TemplateIcon::paint(QPainter* painter, const QRect& area, QIcon::Mode, QIcon::State) {
  const double scale = painter->device()->devicePixelRatioF();
  const int side = static_cast<int>(std::min(area.width(), area.height()) * scale);
  QRectF square(0, 0, side / scale, side / scale);
  square.moveCenter(QRectF(area).center());
  painter->drawPixmap(square, draw(side, tintInTray(painter->device()).value_or(colour_)),
                      QRectF(0, 0, side, side));
}

QPixmap TemplateIcon::pixmap(const QSize& size, QIcon::Mode, QIcon::State) {
  return draw(std::min(size.width(), size.height()), colour_);
}

QList<QSize> TemplateIcon::availableSizes(QIcon::Mode, QIcon::State) {
  QList<QSize> sizes;
  for (const int side : {16, 22, 24, 32, 44, 48, 64}) sizes.append({side, side});
  return sizes;
}

}  // namespace pellow
