#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>
#include <string>
#include <vector>

#include "platform/view.h"
#include "platforms/linux/qt/material.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/qt/window_hints.h"
#include "views/panel_pointer.h"
#include "views/view_tree.h"

namespace pellow {

// The window of a panel: draws its views and tells them of the pointer. Main thread.
class PanelCanvas final : public QWidget {
 public:
  // A rounded rectangle of the panel, in points.
  struct Corners {
    QRectF area;
    double radius = 0;

    bool operator==(const Corners&) const = default;
  };

  // The pictures and the hints outlive the canvas.
  PanelCanvas(const std::string& name, PictureSource& pictures, const WindowHints& hints);

  void setContent(const View& root);

  // Whether the windows below may shine through.
  void setTranslucent(bool translucent);

  // Leaves a menu that is open alone. The window of this has been made before.
  void showBesideMenus();

  // A point has another number of pixels now.
  void placeAnew(const QRect& geometry);

  void setIgnoresMouseEvents(bool ignores);
  bool ignoresMouseEvents() const { return ignoresMouseEvents_; }

  // Finds the view under the pointer once the current work is done: either may have moved.
  void lookForPointerSoon();

  // Hides the canvas, and deletes it once none of its callbacks runs; none is called again.
  void giveUp();

  const ViewTree& tree() const { return tree_; }
  ViewTree::Nodes nodesAt(QPointF point) const { return tree_.at(toContent(point)); }

  // Where the node is; empty when it is not in the tree.
  QRect areaOf(const ViewNode& node) const;

  // What a press and release of the pointer inside the node does.
  void click(const ViewNode& node) { pointer_.click(node); }

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void lookForPointer();
  void showContextMenu(QPointF point, QPoint onScreen);
  void showTooltip(QPoint point, QPoint onScreen);
  void beginHighlights();
  void chooseMaterial();
  void shape();
  double contentHeight() const;
  Stretch stretch() const;
  ViewPoint toContent(QPointF point) const;
  QRectF toPanel(const ViewRect& inContent) const;
  std::vector<Corners> solidParts() const;

  PictureSource& pictures_;
  const WindowHints& hints_;
  ViewTree tree_;
  PanelPointer pointer_{tree_};
  Material material_;
  bool translucent_ = false;
  bool ignoresMouseEvents_ = false;
  std::vector<Corners> shapedFor_;
  bool willLookForPointer_ = false;
  QBasicTimer highlightTimer_;
  QElapsedTimer highlightClock_;
};

}  // namespace pellow
