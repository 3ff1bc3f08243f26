#include "platforms/linux/qt/qt_panels.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <cmath>
#include <utility>

namespace pellow {
namespace {

// Qt keeps the corner of a screen in pixels and measures from there in points.
QRect toQt(const PixelRect& rect) {
  const auto screens = QGuiApplication::screens();
  const QPoint centre(rect.x + rect.width / 2, rect.y + rect.height / 2);
  const QScreen* screen = QGuiApplication::primaryScreen();
  for (const auto* candidate : screens) {
    const QRect area(candidate->geometry().topLeft(),
                     candidate->geometry().size() * candidate->devicePixelRatio());
    if (area.contains(centre)) screen = candidate;
  }
  if (!screen) return {rect.x, rect.y, rect.width, rect.height};
  const double scale = screen->devicePixelRatio();
  const auto corner = screen->geometry().topLeft();
  const auto points = [&](int pixels) { return static_cast<int>(std::lround(pixels / scale)); };
  return {corner.x() + points(rect.x - corner.x()), corner.y() + points(rect.y - corner.y()),
          points(rect.width), points(rect.height)};
}

}  // namespace

class QtPanels::QtPanel final : public Panel {
 public:
  QtPanel(QtPanels& panels, std::string name)
      : panels_(panels), canvas_(new PanelCanvas(name, panels.pictures_)) {
    canvas_->setTranslucent(panels_.compositor_.isRunning());
    panels_.hints_.setName(window(), name);
    panels_.hints_.makePanel(window());
    panels_.panels_.insert(this);
  }

  ~QtPanel() override {
    panels_.panels_.erase(this);
    canvas_->giveUp();
  }

  void setContent(const View& root) override { canvas_->setContent(root); }

  void setFrame(const AppKitRect& frame) override {
    frame_ = frame;
    const auto geometry = toQt(panels_.toPixels_(frame));
    if (geometry == canvas_->geometry()) return;
    canvas_->setGeometry(geometry);
    canvas_->lookForPointerSoon();
  }

  AppKitRect frame() const override { return frame_; }

  void setLevel(PanelLevel level) override {
    if (std::exchange(level_, level) == level) return;
    if (canvas_->isVisible()) panels_.hints_.changeLevel(window(), level);
  }

  void orderFront() override {
    if (canvas_->isVisible()) return canvas_->raise();
    panels_.hints_.prepareForMapping(window(), level_);
    canvas_->show();
    canvas_->raise();
  }

  void orderOut() override {
    canvas_->hide();
    canvas_->lookForPointerSoon();
  }

  bool isVisible() const override { return canvas_->isVisible(); }

  void compositorChanged() { canvas_->setTranslucent(panels_.compositor_.isRunning()); }

 private:
  xcb_window_t window() const { return static_cast<xcb_window_t>(canvas_->winId()); }

  QtPanels& panels_;
  PanelCanvas* canvas_;  // deletes itself when it has been given up
  AppKitRect frame_;
  PanelLevel level_ = PanelLevel::statusWindow;
};

QtPanels::QtPanels(ToPixels toPixels) : toPixels_(std::move(toPixels)) {
  compositor_.onChange([this] {
    for (auto* const panel : panels_) panel->compositorChanged();
  });
}

QtPanels::~QtPanels() = default;

std::unique_ptr<Panel> QtPanels::makePanel(std::string name) {
  return std::make_unique<QtPanel>(*this, std::move(name));
}

}  // namespace pellow
