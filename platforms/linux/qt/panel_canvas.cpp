#include "platforms/linux/qt/panel_canvas.h"

#include <QAccessible>
#include <QBackingStore>
#include <QBitmap>
#include <QCloseEvent>
#include <QCursor>
#include <QEnterEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QHideEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>
#include <QTimerEvent>
#include <QToolTip>
#include <QWindow>
#include <memory>
#include <optional>
#include <utility>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/qt_menu.h"
#include "platforms/linux/qt/screen_geometry.h"
#include "platforms/linux/qt/view_geometry.h"
#include "platforms/linux/qt/view_painter.h"

namespace pellow {
namespace {

constexpr int frameInterval = 16;  // milliseconds
constexpr int pointerPause = 100;  // while the server does not say where the pointer is

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

// In points, from the corner of the X screen, with y up.
AppKitPoint onScreen(const QMouseEvent& event, double scale) {
  const auto pixels = toPixels(event.globalPosition());
  return {pixels.x() / scale, -pixels.y() / scale};
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
  pointer_.onNeedsDisplay = [this](const auto& area) { update(toPanel(area).toAlignedRect()); };
  pointer_.onHighlightsBegin = [this] { beginHighlights(); };
  pointer_.onNeedsPointer = [this] { lookForPointerSoon(); };
  chooseMaterial();
}

void PanelCanvas::setContent(const View& root) {
  const auto parts = tree_.update(root);
  for (const auto& part : parts) update(toPanel(part).toAlignedRect().adjusted(-1, -1, 1, 1));
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

// Qt closes every menu when another window shows, unless that is a tool. To the window system, for
// which a tool is something else, it is none: its window has been made before.
void PanelCanvas::showBesideMenus() {
  const auto flags = windowFlags();
  overrideWindowFlags((flags & ~Qt::WindowType_Mask) | Qt::Tool);
  show();
  overrideWindowFlags(flags);
}

// In points the widget has the same size and mask, so it would leave those of its window alone.
void PanelCanvas::placeAnew(const QRect& geometry) {
  setGeometry(geometry);
  if (windowHandle()) windowHandle()->setGeometry(geometry);
  if (backingStore()) backingStore()->resize(size());
  clearMask();
  shapedFor_.clear();
  shape();
  update();
  lookForPointerSoon();
}

void PanelCanvas::setIgnoresMouseEvents(bool ignores) {
  ignoresMouseEvents_ = ignores;
  hints_.setIgnoresMouseEvents(static_cast<xcb_window_t>(winId()), ignores);
  lookForPointerSoon();
}

void PanelCanvas::giveUp() {
  pointer_.giveUp();
  hide();
  if (pointer_.isCallingBack()) return deleteLater();
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
  const auto add = [&](const ViewNode& node, const ViewRect& area) {
    const auto& look = node.look;
    const bool isRoundPicture =
        std::holds_alternative<Picture>(look.content) && look.cornerRadius > 0;
    if (isRoundPicture || std::holds_alternative<Backdrop>(look.content))
      corners.push_back({toPanel(area), look.cornerRadius});
  };
  const auto& root = tree_.root();
  if (!root) return corners;
  add(*root, root->bounds());
  for (const auto& child : root->children) add(*child, child->frame);
  return corners;
}

void PanelCanvas::chooseMaterial() {
  material_ = Material::of(palette(), translucent_);
  tree_.visit([](const auto& node, const auto&) { node->lookChanged(); });
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
      innermost(nodesAt(point), [](const auto& each) { return !each.look.tooltip.empty(); });
  if (!node) return QToolTip::hideText();
  QToolTip::showText(onScreen, toolTipText(node->look.tooltip), this, areaOf(*node));
}

void PanelCanvas::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  if (!translucent_) {
    painter.fillRect(event->rect(), material_.backdrop);
    painter.fillRect(event->rect(), material_.rim);
  }
  const auto damaged = QRectF(event->rect());
  const auto [x, y] = stretch();
  const auto toSize = QTransform::fromScale(x, y);
  ViewPainter views(painter, material_, pictures_, devicePixelRatioF());
  tree_.visit([&, height = contentHeight()](const std::shared_ptr<ViewNode>& node,
                                            const ViewTransform& toContent) {
    const auto transform = toQt(toContent, *node, height) * toSize;
    if (!transform.mapRect(extentOf(*node)).intersects(damaged)) return;
    views.draw(*node, transform, pointer_.isPressing(*node));
  });
}

double PanelCanvas::contentHeight() const {
  const auto& root = tree_.root();
  return root ? root->frame.height() : 0;
}

// From the content's size to the panel's, which may be changing.
Stretch PanelCanvas::stretch() const {
  return tree_.stretchTo({double(width()), double(height())});
}

ViewPoint PanelCanvas::toContent(QPointF point) const {
  const auto [x, y] = stretch();
  return {point.x() / x, contentHeight() - point.y() / y};
}

QRectF PanelCanvas::toPanel(const ViewRect& inContent) const {
  const auto [x, y] = stretch();
  return QTransform::fromScale(x, y).mapRect(toQt(inContent, contentHeight()));
}

QRect PanelCanvas::areaOf(const ViewNode& node) const {
  const auto area = tree_.areaOf(node);
  return area ? toPanel(*area).toAlignedRect() : QRect();
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
void PanelCanvas::hideEvent(QHideEvent*) { pointer_.endPress(); }

void PanelCanvas::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton)
    return showContextMenu(event->position(), event->globalPosition().toPoint());
  if (event->button() == Qt::LeftButton)
    pointer_.pressed(toContent(event->position()), onScreen(*event, devicePixelRatioF()));
}

void PanelCanvas::mouseMoveEvent(QMouseEvent* event) {
  pointer_.moved(toContent(event->position()), onScreen(*event, devicePixelRatioF()));
}

void PanelCanvas::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  if (pointer_.isDragging()) lookForPointerSoon();
  pointer_.released(toContent(event->position()));
}

void PanelCanvas::showContextMenu(QPointF point, QPoint onScreen) {
  auto context = pointer_.contextMenuAt(toContent(point));
  if (!context) return;
  QToolTip::hideText();
  const auto choose = [this](const auto& onChosen) { pointer_.call(onChosen); };
  auto* const shown = makeMenu(context->menu, {.owner = *this, .hints = hints_, .choose = choose});
  const auto hover = std::make_shared<Subscription>(std::move(context->hover));
  // A choice is queued only after `aboutToHide`; here it is ahead of the look for the pointer.
  connect(shown, &QObject::destroyed, this, [hover] { hover->cancel(); });
  shown->popup(onScreen);
}

void PanelCanvas::enterEvent(QEnterEvent* event) { pointer_.isAt(toContent(event->position())); }

void PanelCanvas::leaveEvent(QEvent*) { pointer_.isAt(std::nullopt); }

void PanelCanvas::lookForPointerSoon() {
  if (std::exchange(willLookForPointer_, true)) return;
  QMetaObject::invokeMethod(this, [this] { lookForPointer(); }, Qt::QueuedConnection);
}

// Qt may not know yet that the pointer is here, as after a menu above the panel; it soon will.
void PanelCanvas::lookForPointer() {
  if (!hints_.serverAnswers()) {
    QTimer::singleShot(pointerPause, this, [this] { lookForPointer(); });
    return;
  }
  willLookForPointer_ = false;
  const auto onScreen = QCursor::pos();
  const auto point = mapFromGlobal(QPointF(onScreen));
  const bool inside = isVisible() && QRectF(rect()).contains(point) &&
                      QGuiApplication::topLevelAt(onScreen) == windowHandle();
  if (!inside) return pointer_.isAt(std::nullopt);
  if (underMouse()) pointer_.isAt(toContent(point));
}

void PanelCanvas::beginHighlights() {
  if (highlightTimer_.isActive()) return;
  highlightClock_.start();
  highlightTimer_.start(frameInterval, Qt::PreciseTimer, this);
}

void PanelCanvas::timerEvent(QTimerEvent* event) {
  if (event->timerId() != highlightTimer_.timerId()) return;
  const double elapsed = static_cast<double>(highlightClock_.restart()) / 1000;
  if (!pointer_.advanceHighlights(elapsed)) highlightTimer_.stop();
}

}  // namespace pellow
