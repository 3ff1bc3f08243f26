#include "platforms/linux/qt/symbol_pixmap.h"

#include <QPainter>
#include <QSvgRenderer>

namespace pellow {

QPixmap transparentPixmap(int side, double scale) {
  QPixmap pixmap(QSize(side, side) * scale);
  pixmap.setDevicePixelRatio(scale);
  pixmap.fill(Qt::transparent);
  return pixmap;
}

QPixmap symbolPixmap(const std::string& name, const QColor& colour, int side, double scale) {
  QSvgRenderer renderer(":/symbols/" + QString::fromStdString(name) + ".svg");
  if (!renderer.isValid()) return {};
  renderer.setAspectRatioMode(Qt::KeepAspectRatio);
  auto pixmap = transparentPixmap(side, scale);
  QPainter painter(&pixmap);
  const QRectF area(0, 0, side, side);
  renderer.render(&painter, area);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(area, colour);
  return pixmap;
}

}  // namespace pellow
