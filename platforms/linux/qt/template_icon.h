#pragma once

#include <QColor>
#include <QIconEngine>
#include <utility>

#include "platform/status_bar.h"

namespace pellow {

// The picture of a status item as an icon. In a tray it is light on a dark panel and dark on a
// light one, as it finds it; another program that shows it gets it in the colour given.
class TemplateIcon final : public QIconEngine {
 public:
  TemplateIcon(StatusImage image, QColor colour) : image_(std::move(image)), colour_(colour) {}

  void paint(QPainter* painter, const QRect& area, QIcon::Mode mode, QIcon::State state) override;
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
  QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;
  QIconEngine* clone() const override { return new TemplateIcon(image_, colour_); }

 private:
  QPixmap draw(int side, const QColor& colour) const;

  StatusImage image_;
  QColor colour_;
};

}  // namespace pellow
