#include "views/panel_motion.h"

#include <cmath>
#include <utility>

namespace pellow {

const PanelLook& PanelMotion::jump(const AppKitRect& frame) {
  cutShort();
  target_.frame = frame;
  return shown_ = target_;
}

void PanelMotion::start(const AppKitRect& frame, double opacity, std::function<void()> onDone) {
  cutShort();
  start_ = shown_;
  target_ = {frame, opacity};
  onDone_ = std::move(onDone);
}

PanelLook PanelMotion::at(double progress) const {
  const auto blend = [&](double from, double to) { return std::lerp(from, to, progress); };
  const auto& from = start_.frame;
  const auto& to = target_.frame;
  return {{blend(from.minX(), to.minX()), blend(from.minY(), to.minY()),
           blend(from.width(), to.width()), blend(from.height(), to.height())},
          blend(start_.opacity, target_.opacity)};
}

const PanelLook& PanelMotion::arrive() {
  shown_ = target_;
  if (onDone_) done_ = queue_.async(std::exchange(onDone_, nullptr));
  return shown_;
}

void PanelMotion::cutShort() {
  onDone_ = nullptr;
  done_.cancel();
}

}  // namespace pellow
