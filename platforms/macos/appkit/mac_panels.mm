#include "platforms/macos/appkit/mac_panels.h"

#include <utility>

#include "platforms/macos/appkit/panel_animation.h"
#include "platforms/macos/appkit/panel_content.h"
#include "platforms/macos/appkit/panel_window.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {

class MacPanels::MacPanel final : public Panel {
 public:
  MacPanel(MacPanels& panels, const std::string& name, WindowShadow shadow)
      : panels_(panels),
        panel_([[PellowPanelWindow alloc] initWithName:toNSString(name) shadow:shadow]),
        content_([[PellowPanelContent alloc] initWithPointerMoved:panels.onPointerMoved_]) {
    panel_.contentView = content_;
    shown_.frame = target_.frame = toAppKitRect(panel_.frame);
  }

  // One of its own events may be what ends it.
  ~MacPanel() override {
    end();
    [content_ giveUp];
    [panel_ orderOut:nil];
    keepUntilIdle(panel_);
  }

  void setContent(View root) override { [content_ showViews:std::move(root)]; }

  void setFrame(const AppKitRect& frame) override {
    end();
    target_.frame = frame;
    show(target_);
  }

  AppKitRect frame() const override { return target_.frame; }

  void animate(const AppKitRect& frame, double opacity, Seconds duration, AnimationTiming timing,
               std::function<void()> onDone) override {
    end();
    target_ = {frame, opacity};
    onDone_ = std::move(onDone);
    if (duration <= 0) return arrive();
    start_ = shown_;
    animation_ = [[PellowPanelAnimation alloc] initWithDuration:duration
        timing:timing
        onStep:[this](double progress) { show(between(progress)); }
        onArrived:[this] { arrive(); }];
    [animation_ startAnimation];
  }

  void setLevel(PanelLevel level) override { [panel_ showAtLevel:level]; }

  // Once told, AppKit lets clear pixels take clicks, too: it is told of changes only.
  void setIgnoresMouseEvents(bool ignores) override {
    if (std::exchange(ignoresMouseEvents_, ignores) == ignores) return;
    panel_.ignoresMouseEvents = ignores;
    [content_ lookForPointerSoon];
  }

  void orderFront() override {
    [panel_ orderFrontRegardless];
    [content_ lookForPointerSoon];
  }

  void orderOut() override {
    PellowPanelContent* const content = content_;
    [panel_ orderOut:nil];
    [content panelWasHidden];
  }

  bool isVisible() const override { return panel_.visible; }

 private:
  // Where the panel is and how much of it is to be seen.
  struct Look {
    AppKitRect frame;
    double opacity = 1;
  };

  Look between(double progress) const {
    const auto blend = [&](double from, double to) { return from + (to - from) * progress; };
    const auto& from = start_.frame;
    const auto& to = target_.frame;
    return {{blend(from.minX(), to.minX()), blend(from.minY(), to.minY()),
             blend(from.width(), to.width()), blend(from.height(), to.height())},
            blend(start_.opacity, target_.opacity)};
  }

  void show(const Look& look) {
    shown_ = look;
    if (panel_.alphaValue != look.opacity) panel_.alphaValue = look.opacity;
    const NSRect frame = toNSRect(look.frame);
    if (NSEqualRects(panel_.frame, frame)) return;
    [panel_ setFrame:frame display:YES];
    [content_ lookForPointerSoon];
  }

  void arrive() {
    show(target_);
    if (onDone_) done_ = panels_.queue_.async(std::exchange(onDone_, nullptr));
  }

  // Whatever is under way is cut short.
  void end() {
    [animation_ cutShort];
    animation_ = nil;
    onDone_ = nullptr;
    done_.cancel();
  }

  MacPanels& panels_;
  PellowPanelWindow* const panel_;
  PellowPanelContent* const content_;
  Look start_;
  Look shown_;
  Look target_;
  PellowPanelAnimation* animation_ = nil;
  std::function<void()> onDone_;  // of the running animation
  Subscription done_;             // of the one that is done
  bool ignoresMouseEvents_ = false;
};

MacPanels::MacPanels(MainQueue& queue, std::function<void()> onPointerMoved)
    : queue_(queue), onPointerMoved_(std::move(onPointerMoved)) {}

std::unique_ptr<Panel> MacPanels::makePanel(std::string name, WindowShadow shadow) {
  return std::make_unique<MacPanel>(*this, name, shadow);
}

}  // namespace pellow
