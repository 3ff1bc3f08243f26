#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/view.h"
#include "platforms/linux/qt/material.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/qt/view_tree.h"
#include "platforms/linux/qt/window_hints.h"

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

  void setContent(View root);

  // Whether the windows below may shine through.
  void setTranslucent(bool translucent);

  void setIgnoresMouseEvents(bool ignores);
  bool ignoresMouseEvents() const { return ignoresMouseEvents_; }

  // Finds the view under the pointer once the current work is done: either may have moved.
  void lookForPointerSoon();

  // Hides the canvas, and deletes it once none of its callbacks runs; none is called again.
  void giveUp();

  const ViewTree& tree() const { return tree_; }

  // Where the node is; empty when it is not in the tree.
  QRect areaOf(const std::shared_ptr<ViewNode>& node) const;

  // What a press and release of the pointer inside the node does.
  void click(const ViewNode& node);

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
  void pointerIsAt(std::optional<QPointF> point);
  void tellHover(const std::vector<std::weak_ptr<ViewNode>>& nodes, bool inside);
  void press(std::shared_ptr<ViewNode> node);
  void dragTo(QPointF onScreen);
  void endDrag();
  bool isDragging() const { return drag_ && drag_->hasBegun; }
  void showContextMenu(QPointF point, QPoint onScreen);
  void call(const std::function<void()>& callback);
  void showTooltip(QPoint point, QPoint onScreen);
  void advanceHighlights();
  void chooseMaterial();
  void shape();
  QTransform scaleToSize() const;
  std::vector<Corners> solidParts() const;

  PictureSource& pictures_;
  const WindowHints& hints_;
  ViewTree tree_;
  Material material_;
  bool translucent_ = false;
  bool ignoresMouseEvents_ = false;
  std::vector<Corners> shapedFor_;
  bool givenUp_ = false;
  int runningCallbacks_ = 0;
  bool willLookForPointer_ = false;
  std::shared_ptr<ViewNode> pressed_;
  // A press that becomes a drag once the pointer has moved far enough.
  struct Drag {
    DragActions actions;  // of the view that was pressed, whatever becomes of it
    QPointF from;         // pixels of the X screen
    bool hasBegun = false;
  };
  std::optional<Drag> drag_;
  QBasicTimer highlightTimer_;
  QElapsedTimer highlightClock_;
};

}  // namespace pellow
