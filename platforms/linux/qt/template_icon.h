#pragma once

#include <QIconEngine>

#include "platform/status_bar.h"

namespace pellow {

// The picture of a status item as an icon: in the colour that suits what it is painted on, light on
// a dark panel and dark on a light one.
class TemplateIcon final : public QIconEngine {
 public:
  explicit TemplateIcon(StatusImage image) : image_(std::move(image)) {}

  void paint(QPainter* painter, const QRect& area, QIcon::Mode mode, QIcon::State state) override;
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
  QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;
  QIconEngine* clone() const override { return new TemplateIcon(image_); }

 private:
  QPixmap draw(int side, const QColor& colour) const;

  StatusImage image_;
};

}  // namespace pellow
