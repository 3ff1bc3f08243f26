#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>
#include <memory>
#include <string>

#include "platform/view.h"
#include "platforms/linux/qt/material.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/qt/view_tree.h"

namespace pellow {

// The window of a panel: draws its views and tells them of the pointer. Callbacks of views may
// replace the views and give up the panel.
class PanelCanvas final : public QWidget {
 public:
  PanelCanvas(const std::string& name, PictureSource& pictures);
  ~PanelCanvas() override;

  void setContent(const View& root);

  // Whether the windows below may shine through.
  void setTranslucent(bool translucent);

  // Ends all callbacks; the canvas is about to be deleted.
  void giveUp();

  // Compares the pointer with the views once the current work is done, as one may have moved away
  // under the other.
  void lookForPointerSoon();

  const ViewTree& tree() const { return tree_; }
  void click(const ViewNode& node);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void pointerIsAt(std::optional<QPointF> point);
  void showTooltip(QPoint point, QPoint onScreen);
  void advanceHighlights();
  void chooseMaterial();
  void shape();
  void redraw(const QRectF& part);
  std::shared_ptr<ViewNode> clickableAt(QPointF point) const;

  PictureSource& pictures_;
  ViewTree tree_;
  Material material_;
  bool translucent_ = false;
  bool givenUp_ = false;
  bool lookPending_ = false;
  std::shared_ptr<ViewNode> pressed_;
  bool pressedInside_ = false;
  QBasicTimer highlightTimer_;
  QElapsedTimer highlightClock_;
};

}  // namespace pellow
