#include "capture/flight_animator.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace pellow {
namespace {

constexpr double iconShare = 0.6;  // of the window's smaller side
constexpr double iconAtMost = 180;
constexpr double tooSmall = 1.0;
constexpr double fadedOut = 0.15;
constexpr double cornerRadius = 6.0;
constexpr Seconds frameTime = 1.0 / 60;
constexpr std::size_t atATime = 8;  // as many as a display can draw

AppKitRect centred(Size size, const AppKitRect& in) {
  return {in.midX() - size.width / 2, in.midY() - size.height / 2, size.width, size.height};
}

// The frame of what flies, for a window of this frame.
AppKitRect extent(FlightAnimator::Subject subject, const AppKitRect& windowFrame) {
  if (subject == FlightAnimator::Subject::picture) return windowFrame;
  const auto side =
      std::min(iconShare * std::min(windowFrame.width(), windowFrame.height()), iconAtMost);
  return centred({side, side}, windowFrame);
}

bool canBeSeen(const AppKitRect& rect) {
  return rect.width() > tooSmall && rect.height() > tooSmall;
}

}  // namespace

AppKitRect FlightAnimator::landing(const AppKitRect& rect, const AppKitRect& tabFrame) {
  if (rect.width() <= 0 || rect.height() <= 0) return tabFrame;
  const auto scale = std::min(tabFrame.width() / rect.width(), tabFrame.height() / rect.height());
  return centred({rect.width() * scale, rect.height() * scale}, tabFrame);
}

void FlightAnimator::flyOut(const Image& image, Subject subject, const AppKitRect& windowFrame,
                            const AppKitRect& tabFrame, std::function<void()> completion) {
  const auto start = extent(subject, windowFrame);
  fly(image, start, landing(start, tabFrame), 1.0, fadedOut, std::move(completion));
}

void FlightAnimator::flyBack(const Image& image, Subject subject, const AppKitRect& tabFrame,
                             const AppKitRect& windowFrame) {
  const auto end = extent(subject, windowFrame);
  fly(image, landing(end, tabFrame), end, fadedOut, 1.0);
}

void FlightAnimator::fly(const Image& image, const AppKitRect& from, const AppKitRect& to,
                         double fadeFrom, double fadeTo, std::function<void()> completion) {
  if (!makeWay() || !canBeSeen(from) || !canBeSeen(to)) {
    if (completion) completion();
    return;
  }
  Flight flight{image, from, to, fadeFrom, fadeTo, std::move(completion)};
  if (flying_.empty() && waiting_.empty()) return begin(std::move(flight));
  waiting_.push_back(std::move(flight));
  beginNextSoon();
}

bool FlightAnimator::makeWay() {
  if (!waiting_.empty()) beginNextSoon();
  return flying_.size() + waiting_.size() < atATime;
}

// A frame after the latest call.
void FlightAnimator::beginNextSoon() {
  lull_ = mainQueue_.after(frameTime, [this] {
    auto next = std::move(waiting_.front());
    waiting_.pop_front();
    begin(std::move(next));
    if (!waiting_.empty()) beginNextSoon();
  });
}

void FlightAnimator::begin(Flight flight) {
  const auto& [image, from, to, fadeFrom, fadeTo, completion] = flight;
  // Scaled down from the larger of its sizes, it stays sharp all the way.
  const auto& largest = from.area() > to.area() ? from : to;
  const auto place =
      flying_.insert(flying_.end(), panels_.makePanel("pellow-flight", WindowShadow::no));
  auto& panel = **place;
  panel.setIgnoresMouseEvents(true);
  panel.setLevel(PanelLevel::statusWindow);
  panel.setContent({.key = "picture",
                    .frame = {{}, largest.size},
                    .look = {.content = Picture{image}, .cornerRadius = cornerRadius}});
  panel.animate(from, fadeFrom, 0, AnimationTiming::linear, nullptr);
  panel.orderFront();
  panel.animate(to, fadeTo, preferences_.animationDuration(), AnimationTiming::easeInOut,
                [this, place, done = completion] {
                  flying_.erase(place);
                  if (done) done();
                });
}

}  // namespace pellow
