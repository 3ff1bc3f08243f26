#include "platforms/macos/appkit/mac_panels.h"

#include <utility>

#include "platforms/macos/appkit/panel_animation.h"
#include "platforms/macos/appkit/panel_content.h"
#include "platforms/macos/appkit/panel_window.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"
#include "views/panel_motion.h"

namespace pellow {

class MacPanels::MacPanel final : public Panel {
 public:
  MacPanel(MacPanels& panels, const std::string& name, WindowShadow shadow)
      : panel_([[PellowPanelWindow alloc] initWithName:toNSString(name) shadow:shadow]),
        content_([[PellowPanelContent alloc] initWithPointerMoved:panels.onPointerMoved_]),
        motion_(panels.queue_) {
    panel_.contentView = content_;
    motion_.jump(toAppKitRect(panel_.frame));
  }

  // One of its own events may be what ends it.
  ~MacPanel() override {
    stopAnimation();
    [content_ giveUp];
    [panel_ orderOut:nil];
    [PellowPanelContent lookForPointerSoon];
    keepUntilIdle(panel_);
  }

  void setContent(const View& root) override { [content_ showViews:root]; }

  void setFrame(const AppKitRect& frame) override {
    stopAnimation();
    show(motion_.jump(frame));
  }

  AppKitRect frame() const override { return motion_.target().frame; }

  void animate(const AppKitRect& frame, double opacity, Seconds duration, AnimationTiming timing,
               std::function<void()> onDone) override {
    stopAnimation();
    motion_.start(frame, opacity, std::move(onDone));
    if (duration <= 0) return show(motion_.arrive());
    animation_ = [[PellowPanelAnimation alloc] initWithDuration:duration
        timing:timing
        onStep:[this](double progress) { show(motion_.advance(progress)); }
        onArrived:[this] { show(motion_.arrive()); }];
    [animation_ startAnimation];
  }

  void setLevel(PanelLevel level) override { [panel_ showAtLevel:level]; }

  // Once told, AppKit lets clear pixels take clicks, too: it is told of changes only.
  void setIgnoresMouseEvents(bool ignores) override {
    if (std::exchange(ignoresMouseEvents_, ignores) == ignores) return;
    panel_.ignoresMouseEvents = ignores;
    [PellowPanelContent lookForPointerSoon];
  }

  void orderFront() override {
    [panel_ orderFrontRegardless];
    [PellowPanelContent lookForPointerSoon];
  }

  void orderOut() override {
    PellowPanelContent* const content = content_;
    [panel_ orderOut:nil];
    [content panelWasHidden];
  }

  bool isVisible() const override { return panel_.visible; }

 private:
  void show(const PanelLook& look) {
    if (panel_.alphaValue != look.opacity) panel_.alphaValue = look.opacity;
    const NSRect frame = toNSRect(look.frame);
    if (NSEqualRects(panel_.frame, frame)) return;
    [panel_ setFrame:frame display:YES];
    [PellowPanelContent lookForPointerSoon];
  }

  void stopAnimation() {
    [animation_ cutShort];
    animation_ = nil;
  }

  PellowPanelWindow* const panel_;
  PellowPanelContent* const content_;
  PanelMotion motion_;
  PellowPanelAnimation* animation_ = nil;
  bool ignoresMouseEvents_ = false;
};

MacPanels::MacPanels(MainQueue& queue, std::function<void()> onPointerMoved)
    : queue_(queue), onPointerMoved_(std::move(onPointerMoved)) {}

std::unique_ptr<Panel> MacPanels::makePanel(std::string name, WindowShadow shadow) {
  return std::make_unique<MacPanel>(*this, name, shadow);
}

}  // namespace pellow
