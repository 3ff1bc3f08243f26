#include "platforms/linux/qt/template_icon.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QScreen>
#include <QWidget>
#include <algorithm>

#include "platforms/linux/qt/symbol_pixmap.h"

namespace pellow {
namespace {

constexpr double badgeShare = 0.4;  // of the picture's side
constexpr double gapShare = 0.07;   // around the badge

// A panel has colours of its own. A tray shows our window in the middle of it, so the window's
// corner, which the picture leaves free, shows the panel's colour.
QColor colourOn(const QPaintDevice* device) {
  const auto* const window = dynamic_cast<const QWidget*>(device);
  if (!window || !window->screen()) return QGuiApplication::palette().color(QPalette::WindowText);
  const auto corner = window->mapToGlobal(QPoint(0, 0)) - window->screen()->geometry().topLeft();
  const auto panel = window->screen()->grabWindow(0, corner.x(), corner.y(), 1, 1).toImage();
  const bool isLight = !panel.isNull() && qGray(panel.pixel(0, 0)) > 140;
  return isLight ? QColor(0x2e, 0x2e, 0x2e) : QColor(0xf2, 0xf2, 0xf2);
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
  painter->drawPixmap(square, draw(side, colourOn(painter->device())), QRectF(0, 0, side, side));
}

QPixmap TemplateIcon::pixmap(const QSize& size, QIcon::Mode, QIcon::State) {
  return draw(std::min(size.width(), size.height()), colourOn(nullptr));
}

QList<QSize> TemplateIcon::availableSizes(QIcon::Mode, QIcon::State) {
  QList<QSize> sizes;
  for (const int side : {16, 22, 24, 32, 44, 48, 64}) sizes.append({side, side});
  return sizes;
}

}  // namespace pellow
