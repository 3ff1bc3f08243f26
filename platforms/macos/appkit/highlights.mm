#include "platforms/macos/appkit/highlights.h"

#include <algorithm>
#include <utility>

namespace pellow {
namespace {

constexpr double fadeIn = 0.06;             // seconds
constexpr double fadeOut = 0.15;            // seconds
constexpr double frameInterval = 1.0 / 60;  // seconds

}  // namespace

Highlights::Highlights(std::shared_ptr<const ViewTree> tree, PellowViewCanvas* canvas)
    : tree_(std::move(tree)), canvas_(canvas) {}

Highlights::~Highlights() { end(); }

void Highlights::begin() {
  if (timer_) return;
  latestStep_ = NSProcessInfo.processInfo.systemUptime;
  timer_ = [NSTimer timerWithTimeInterval:frameInterval
                                  repeats:YES
                                    block:^(NSTimer*) {
                                      @autoreleasepool {
                                        advance();
                                      }
                                    }];
  [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
}

void Highlights::end() {
  [timer_ invalidate];
  timer_ = nil;
}

void Highlights::advance() {
  const NSTimeInterval now = NSProcessInfo.processInfo.systemUptime;
  const double elapsed = now - std::exchange(latestStep_, now);
  bool goesOn = false;
  tree_->visit([&](const std::shared_ptr<ViewNode>& node, const CGAffineTransform& toPanel) {
    const double goal = node->isHovered ? 1 : 0;
    if (!node->look.highlightsOnHover || node->highlight == goal) return;
    const double step = node->isHovered ? elapsed / fadeIn : -elapsed / fadeOut;
    node->highlight = std::clamp(node->highlight + step, 0.0, 1.0);
    goesOn = goesOn || node->highlight != goal;
    [canvas_ contentNeedsDisplayIn:CGRectApplyAffineTransform(node->bounds(), toPanel)];
  });
  if (!goesOn) end();
}

}  // namespace pellow
