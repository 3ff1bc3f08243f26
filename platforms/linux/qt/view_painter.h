#pragma once

#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

#include "platforms/linux/qt/material.h"
#include "platforms/linux/qt/picture_source.h"
#include "views/view_tree.h"

namespace pellow {

// Draws the views of a panel.
class ViewPainter {
 public:
  // `scale` is device pixels per point of what the painter draws on.
  ViewPainter(QPainter& painter, const Material& material, PictureSource& pictures, double scale)
      : painter_(painter), material_(material), pictures_(pictures), scale_(scale) {}

  // Draws the node without its children. `toPanel` leads from its coordinates to the painter's.
  void draw(ViewNode& node, const QTransform& toPanel, bool isPressed);

 private:
  void drawContent(ViewNode& node);
  void drawPicture(ViewNode& node, const Picture& picture);
  void drawLabel(const ViewNode& node, const Label& label);
  void drawBackdrop(const ViewNode& node);
  void drawSymbol(const ViewNode& node, const Symbol& symbol);
  void drawHighlight(const ViewNode& node, bool isPressed);
  void drawRounded(const QRectF& area, double radius);
  void drawRounded(const QPixmap& pixmap, const QRectF& area, double radius);
  void drawAsPixmap(ViewNode& node, const QTransform& toPanel);
  QPixmap makePixmap(ViewNode& node, double rotation);

  QPainter& painter_;
  const Material& material_;
  PictureSource& pictures_;
  double scale_;
  QSizeF stretch_{1, 1};  // of the node that is drawn, to the panel's size
};

}  // namespace pellow
