#include "platforms/linux/qt/qt_panels.h"

#include <QEasingCurve>
#include <QSignalBlocker>
#include <QVariantAnimation>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platforms/linux/qt/screen_geometry.h"
#include "views/panel_motion.h"

namespace pellow {
namespace {

QEasingCurve curveOf(AnimationTiming timing) {
  if (timing == AnimationTiming::linear) return QEasingCurve::Linear;
  const QPointF start(timing == AnimationTiming::easeInOut ? 0.42 : 0, 0);
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment(start, {0.58, 1}, {1, 1});
  return curve;
}

}  // namespace

class QtPanels::QtPanel final : public Panel {
 public:
  QtPanel(QtPanels& panels, std::string name)
      : panels_(panels),
        canvas_(new PanelCanvas(name, panels.pictures_, panels.hints_)),
        motion_(panels.queue_) {
    canvas_->setTranslucent(panels_.compositor_.isRunning());
    panels_.hints_.setName(window(), name);
    panels_.hints_.makePanel(window());
    panels_.panels_.insert(this);
    animation_.setStartValue(0.0);
    animation_.setEndValue(1.0);
    QObject::connect(&animation_, &QVariantAnimation::valueChanged, canvas_,
                     [this](const QVariant& value) { show(motion_.advance(value.toDouble())); });
    QObject::connect(&animation_, &QVariantAnimation::finished, canvas_,
                     [this] { show(motion_.arrive()); });
  }

  ~QtPanel() override {
    animation_.stop();
    panels_.panels_.erase(this);
    canvas_->giveUp();
  }

  void setContent(const View& root) override { canvas_->setContent(root); }

  void setFrame(const AppKitRect& frame) override {
    animation_.stop();
    show(motion_.jump(frame));
  }

  AppKitRect frame() const override { return motion_.target().frame; }

  void animate(const AppKitRect& frame, double opacity, Seconds duration, AnimationTiming timing,
               std::function<void()> onDone) override {
    animation_.stop();
    motion_.start(frame, opacity, std::move(onDone));
    const auto milliseconds = std::lround(std::max(duration, 0.0) * 1000);
    if (milliseconds == 0) return show(motion_.arrive());
    prepareAnimation(static_cast<int>(milliseconds), timing);
    animation_.start();
  }

  void setLevel(PanelLevel level) override {
    if (std::exchange(level_, level) == level) return;
    if (canvas_->isVisible()) panels_.hints_.changeLevel(window(), level);
  }

  void setIgnoresMouseEvents(bool ignores) override { canvas_->setIgnoresMouseEvents(ignores); }

  void orderFront() override {
    if (canvas_->isVisible()) return panels_.raise(*canvas_);
    panels_.hints_.prepareForMapping(window(), level_);
    panels_.hints_.setManaged(window(),
                              !canvas_->ignoresMouseEvents() && !panels_.around_.stretchesDocks());
    canvas_->showBesideMenus();
    canvas_->raise();
  }

  void orderOut() override {
    auto* const canvas = canvas_;  // the end of a drag may end the panel
    canvas->lookForPointerSoon();
    canvas->hide();
  }

  bool isVisible() const override { return canvas_->isVisible(); }

  xcb_window_t window() const { return static_cast<xcb_window_t>(canvas_->winId()); }

  bool meets(const PanelCanvas& other) const {
    return canvas_ != &other && canvas_->geometry().intersects(other.geometry());
  }

  void placeAnew() { canvas_->placeAnew(toQt(panels_.around_.toPixels(motion_.shown().frame))); }

  void compositorChanged() { canvas_->setTranslucent(panels_.compositor_.isRunning()); }

 private:
  void show(const PanelLook& look) {
    if (canvas_->windowOpacity() != look.opacity) canvas_->setWindowOpacity(look.opacity);
    const auto geometry = toQt(panels_.around_.toPixels(look.frame));
    if (geometry == canvas_->geometry()) return;
    canvas_->setGeometry(geometry);
    canvas_->lookForPointerSoon();
  }

  // An animation that has run once reports values while it is being changed.
  void prepareAnimation(int milliseconds, AnimationTiming timing) {
    const QSignalBlocker silent(animation_);
    animation_.setDuration(milliseconds);
    animation_.setEasingCurve(curveOf(timing));
  }

  QtPanels& panels_;
  PanelCanvas* canvas_;  // deletes itself when it has been given up
  PanelMotion motion_;
  QVariantAnimation animation_;
  PanelLevel level_ = PanelLevel::statusWindow;
};

QtPanels::QtPanels(MainQueue& queue, Surroundings surroundings)
    : queue_(queue), around_(std::move(surroundings)), hints_(around_.serverAnswers) {
  compositor_.onChange([this] {
    for (auto* const panel : panels_) panel->compositorChanged();
  });
}

QtPanels::~QtPanels() = default;

void QtPanels::placeAnew() {
  for (auto* const panel : panels_) panel->placeAnew();
}

// To raise one window, a window manager reorders all of them, and there may be hundreds. Panels
// that do not meet may stand in any order.
void QtPanels::raise(PanelCanvas& canvas) {
  std::set<xcb_window_t> elsewhere;
  for (const auto* const panel : panels_)
    if (!panel->meets(canvas)) elsewhere.insert(panel->window());
  if (!hints_.isInFront(static_cast<xcb_window_t>(canvas.winId()), elsewhere)) canvas.raise();
}

std::unique_ptr<Panel> QtPanels::makePanel(std::string name, WindowShadow) {
  return std::make_unique<QtPanel>(*this, std::move(name));
}

}  // namespace pellow
