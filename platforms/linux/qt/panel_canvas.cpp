#include "platforms/linux/qt/panel_canvas.h"

#include <QAccessible>
#include <QBitmap>
#include <QCloseEvent>
#include <QCursor>
#include <QEnterEvent>
#include <QHelpEvent>
#include <QHideEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/qt_menu.h"
#include "platforms/linux/qt/screen_geometry.h"
#include "platforms/linux/qt/view_painter.h"

namespace pellow {
namespace {

constexpr double fadeIn = 0.06;      // seconds
constexpr double fadeOut = 0.15;     // seconds
constexpr int frameInterval = 16;    // milliseconds
constexpr double dragThreshold = 3;  // points

QRegion regionOf(const std::vector<PanelCanvas::Corners>& backdrops, QSize size) {
  QBitmap shape(size);
  shape.clear();
  QPainter painter(&shape);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::color1);
  for (const auto& [area, radius] : backdrops) painter.drawRoundedRect(area, radius, radius);
  painter.end();
  return QRegion(shape);
}

bool contains(const std::vector<std::shared_ptr<ViewNode>>& nodes,
              const std::shared_ptr<ViewNode>& node) {
  return std::ranges::find(nodes, node) != nodes.end();
}

// The innermost node at a point for which `has` holds; empty when there is none.
template <class Has>
std::shared_ptr<ViewNode> innermost(const std::vector<std::shared_ptr<ViewNode>>& nodes, Has has) {
  const auto found = std::ranges::find_if(nodes.rbegin(), nodes.rend(),
                                          [&](const auto& node) { return has(*node); });
  return found == nodes.rend() ? nullptr : *found;
}

}  // namespace

PanelCanvas::PanelCanvas(const std::string& name, PictureSource& pictures, const WindowHints& hints)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus),
      pictures_(pictures),
      hints_(hints) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_AlwaysShowToolTips);
  setAttribute(Qt::WA_QuitOnClose, false);
  setFocusPolicy(Qt::NoFocus);
  setMouseTracking(true);
  setWindowTitle(QString::fromStdString(name));
  chooseMaterial();
}

void PanelCanvas::setContent(View root) {
  constexpr std::size_t manyParts = 64;
  const auto parts = tree_.update(std::move(root));
  if (parts.size() > manyParts) {
    update();
  } else {
    for (const auto& part : parts) update(part.toAlignedRect().adjusted(-1, -1, 1, 1));
  }
  if (parts.empty()) return;
  shape();
  if (underMouse()) lookForPointerSoon();
  if (!QAccessible::isActive()) return;
  QAccessibleEvent changed(this, QAccessible::ObjectReorder);
  QAccessible::updateAccessibility(&changed);
}

void PanelCanvas::setTranslucent(bool translucent) {
  if (translucent_ == translucent) return;
  translucent_ = translucent;
  chooseMaterial();
  shape();
}

void PanelCanvas::setIgnoresMouseEvents(bool ignores) {
  ignoresMouseEvents_ = ignores;
  hints_.setIgnoresMouseEvents(static_cast<xcb_window_t>(winId()), ignores);
  lookForPointerSoon();
}

void PanelCanvas::giveUp() {
  givenUp_ = true;
  hide();
  if (runningCallbacks_ > 0) return deleteLater();
  delete this;
}

// Without a compositor the corners are cut off; pixels cut in two are drawn over the colour of the
// rim.
void PanelCanvas::shape() {
  auto corners = translucent_ ? std::vector<Corners>() : solidParts();
  if (corners == shapedFor_) return;
  shapedFor_ = std::move(corners);
  if (shapedFor_.empty()) {
    clearMask();
  } else {
    setMask(regionOf(shapedFor_, size()));
  }
}

// The backdrops (the panel's content, or directly inside it) and a flying picture.
std::vector<PanelCanvas::Corners> PanelCanvas::solidParts() const {
  std::vector<Corners> corners;
  const auto add = [&, toSize = scaleToSize()](const ViewNode& node, QPointF origin) {
    const auto& look = node.look;
    const bool isRoundPicture =
        std::holds_alternative<Picture>(look.content) && look.cornerRadius > 0;
    if (isRoundPicture || std::holds_alternative<Backdrop>(look.content))
      corners.push_back({toSize.mapRect(node.bounds().translated(origin)), look.cornerRadius});
  };
  const auto& root = tree_.root();
  if (!root) return corners;
  add(*root, {});
  for (const auto& child : root->children)
    add(*child, {child->frame.minX(), root->frame.height() - child->frame.maxY()});
  return corners;
}

void PanelCanvas::chooseMaterial() {
  material_ = Material::of(palette(), translucent_);
  tree_.visit([](const auto& node, const auto&) { node->drawing.pixmap = {}; });
  update();
}

bool PanelCanvas::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* const help = static_cast<QHelpEvent*>(event);
    showTooltip(help->pos(), help->globalPos());
    return true;
  }
  return QWidget::event(event);
}

void PanelCanvas::showTooltip(QPoint point, QPoint onScreen) {
  const auto node =
      innermost(tree_.at(point), [](const auto& each) { return !each.look.tooltip.empty(); });
  if (!node) return QToolTip::hideText();
  QToolTip::showText(onScreen, toolTipText(node->look.tooltip), this, areaOf(node));
}

void PanelCanvas::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  if (!translucent_) {
    painter.fillRect(event->rect(), material_.backdrop);
    painter.fillRect(event->rect(), material_.rim);
  }
  const auto damaged = QRectF(event->rect());
  const auto toPanelSize = scaleToSize();
  const bool presses = pressed_ && pressed_->isHovered;
  ViewPainter views(painter, material_, pictures_, devicePixelRatioF());
  tree_.visit([&](const std::shared_ptr<ViewNode>& node, const QTransform& inContent) {
    const auto toPanel = inContent * toPanelSize;
    if (!toPanel.mapRect(node->extent()).intersects(damaged)) return;
    views.draw(*node, toPanel, presses && node == pressed_);
  });
}

// From the content's size to the panel's, which may be changing.
QTransform PanelCanvas::scaleToSize() const {
  const auto& root = tree_.root();
  if (!root) return {};
  const QSizeF size(root->frame.width(), root->frame.height());
  if (size.isEmpty() || size.toSize() == this->size()) return {};
  return QTransform::fromScale(width() / size.width(), height() / size.height());
}

void PanelCanvas::resizeEvent(QResizeEvent*) {
  shape();
  lookForPointerSoon();
}

void PanelCanvas::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
    chooseMaterial();
  QWidget::changeEvent(event);
}

// Only its owner takes a panel away.
void PanelCanvas::closeEvent(QCloseEvent* event) { event->ignore(); }

// A hidden window hears no more of a drag.
void PanelCanvas::hideEvent(QHideEvent*) {
  pressed_.reset();
  endDrag();
}

void PanelCanvas::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton && !drag_)
    return showContextMenu(event->position(), event->globalPosition().toPoint());
  if (event->button() != Qt::LeftButton) return;
  const auto nodes = tree_.at(event->position());
  if (auto node = innermost(nodes, [](const auto& each) { return bool(each.actions.onClick); }))
    press(std::move(node));
  if (const auto node = innermost(nodes, [](const auto& each) { return bool(each.actions.drag); }))
    drag_ = Drag{node->actions.drag, toPixels(event->globalPosition())};
}

void PanelCanvas::mouseMoveEvent(QMouseEvent* event) {
  if (drag_) dragTo(event->globalPosition());
  if (!isDragging()) pointerIsAt(event->position());
}

void PanelCanvas::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  if (isDragging()) {
    endDrag();
    return lookForPointerSoon();
  }
  drag_.reset();
  const auto node = pressed_;
  press(nullptr);
  if (node && contains(tree_.at(event->position()), node)) click(*node);
}

void PanelCanvas::dragTo(QPointF onScreen) {
  const auto moved = (toPixels(onScreen) - drag_->from) / devicePixelRatioF();
  const auto actions = drag_->actions;
  if (!drag_->hasBegun) {
    if (std::hypot(moved.x(), moved.y()) < dragThreshold) return;
    drag_->hasBegun = true;
    press(nullptr);
    QToolTip::hideText();
    call(actions.onBegan);
  }
  if (!drag_ || !actions.onDragged) return;
  call([&] { actions.onDragged({moved.x(), -moved.y()}); });
}

void PanelCanvas::endDrag() {
  const auto drag = std::exchange(drag_, std::nullopt);
  if (drag && drag->hasBegun) call(drag->actions.onEnded);
}

void PanelCanvas::showContextMenu(QPointF point, QPoint onScreen) {
  const auto node =
      innermost(tree_.at(point), [](const auto& each) { return bool(each.actions.contextMenu); });
  if (!node) return;
  Menu menu;
  call([&menu, contextMenu = node->actions.contextMenu] { menu = contextMenu(); });
  if (givenUp_ || menu.items.empty()) return;
  QToolTip::hideText();
  const auto choose = [this](const auto& onChosen) { call(onChosen); };
  auto* const shown = makeMenu(menu, {.owner = *this, .hints = hints_, .choose = choose});
  connect(shown, &QMenu::aboutToHide, this, [this] { lookForPointerSoon(); });
  shown->popup(onScreen);
}

void PanelCanvas::press(std::shared_ptr<ViewNode> node) {
  const auto before = std::exchange(pressed_, std::move(node));
  for (const auto& changed : {before, pressed_}) update(areaOf(changed));
}

QRect PanelCanvas::areaOf(const std::shared_ptr<ViewNode>& node) const {
  QRect area;
  tree_.visit([&](const auto& other, const QTransform& toPanel) {
    if (other == node) area = toPanel.mapRect(other->bounds()).toAlignedRect();
  });
  return area;
}

void PanelCanvas::click(const ViewNode& node) { call(node.actions.onClick); }

void PanelCanvas::call(const std::function<void()>& callback) {
  if (givenUp_ || !callback) return;
  const auto kept = callback;  // it may replace its own view
  ++runningCallbacks_;
  kept();
  --runningCallbacks_;
}

void PanelCanvas::enterEvent(QEnterEvent* event) {
  if (!isDragging()) pointerIsAt(event->position());
}

void PanelCanvas::leaveEvent(QEvent*) {
  if (!isDragging()) pointerIsAt(std::nullopt);
}

void PanelCanvas::lookForPointerSoon() {
  if (std::exchange(willLookForPointer_, true)) return;
  QMetaObject::invokeMethod(this, [this] { lookForPointer(); }, Qt::QueuedConnection);
}

void PanelCanvas::lookForPointer() {
  willLookForPointer_ = false;
  if (isDragging()) return;
  const auto point = mapFromGlobal(QPointF(QCursor::pos()));
  const bool inside = isVisible() && QRectF(rect()).contains(point) && underMouse();
  pointerIsAt(inside ? std::optional(point) : std::nullopt);
}

void PanelCanvas::pointerIsAt(std::optional<QPointF> point) {
  const auto now = point ? tree_.at(*point) : std::vector<std::shared_ptr<ViewNode>>();
  std::vector<std::weak_ptr<ViewNode>> left;
  std::vector<std::weak_ptr<ViewNode>> entered;
  tree_.visit([&](const std::shared_ptr<ViewNode>& node, const QTransform&) {
    const bool inside = contains(now, node);
    if (inside != node->isHovered) (inside ? entered : left).push_back(node);
  });
  if (left.empty() && entered.empty()) return;
  std::ranges::reverse(left);  // from the inside out
  for (const auto& node : left) node.lock()->isHovered = false;
  for (const auto& node : entered) node.lock()->isHovered = true;
  if (!highlightTimer_.isActive()) {
    highlightClock_.start();
    highlightTimer_.start(frameInterval, Qt::PreciseTimer, this);
  }
  ++runningCallbacks_;
  tellHover(left, false);
  tellHover(entered, true);
  --runningCallbacks_;
}

void PanelCanvas::tellHover(const std::vector<std::weak_ptr<ViewNode>>& nodes, bool inside) {
  for (const auto& weak : nodes) {
    const auto node = weak.lock();
    if (!node || !node->actions.onHoverChanged) continue;
    call([callback = node->actions.onHoverChanged, inside] { callback(inside); });
  }
}

void PanelCanvas::timerEvent(QTimerEvent* event) {
  if (event->timerId() == highlightTimer_.timerId()) advanceHighlights();
}

void PanelCanvas::advanceHighlights() {
  const double elapsed = static_cast<double>(highlightClock_.restart()) / 1000;
  bool goesOn = false;
  tree_.visit([&](const std::shared_ptr<ViewNode>& node, const QTransform& toPanel) {
    const double goal = node->isHovered ? 1 : 0;
    if (!node->look.highlightsOnHover || node->highlight == goal) return;
    const double step = node->isHovered ? elapsed / fadeIn : -elapsed / fadeOut;
    node->highlight = std::clamp(node->highlight + step, 0.0, 1.0);
    goesOn = goesOn || node->highlight != goal;
    update(toPanel.mapRect(node->bounds()).toAlignedRect());
  });
  if (!goesOn) highlightTimer_.stop();
}

}  // namespace pellow
