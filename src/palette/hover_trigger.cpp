#include "palette/hover_trigger.h"

#include <cmath>
#include <utility>

#include "access/ax.h"
#include "base/scoped_flag.h"

namespace pellow {
namespace {

constexpr Seconds probeInterval = 0.05;
constexpr Seconds dwell = 0.25;
constexpr double minimumTravel = 2;  // points
constexpr Seconds windowSweepInterval = 0.6;
constexpr Seconds patience = AX::timeout::systemWide;

}  // namespace

HoverTrigger::HoverTrigger(const Surroundings& surroundings)
    : around_(surroundings),
      queue_(around_.queues, "com.velloway.pellow.hover"),
      tasks_([this](std::exception_ptr) { around_.log.error("A look below the pointer failed"); }) {
}

void HoverTrigger::start() {
  const auto moved = [this] { cursorMoved(); };
  globalMonitor_ = around_.monitors.addGlobalPointerMoved(moved);
  localMonitor_ = around_.monitors.addLocalPointerMoved(moved);
}

void HoverTrigger::stop() {
  globalMonitor_.reset();
  localMonitor_.reset();
}

void HoverTrigger::reset() {
  candidateButton_.reset();
  reportedButton_.reset();
  protectedRect.reset();
  dwellWork_.cancel();
}

void HoverTrigger::cursorMoved() {
  const auto now = around_.clock.now();
  if (probeInFlight_ || now - lastProbe_ < probeInterval) return;
  const auto pointer = around_.monitors.pointerLocation();
  if (protectedRect && protectedRect->contains(pointer)) return;
  const auto travel = pointer - lastPoint_;
  if (std::hypot(travel.dx, travel.dy) < minimumTravel) return;
  lastProbe_ = now;
  lastPoint_ = pointer;
  const bool sweeps = now - lastWindowSweep_ >= windowSweepInterval;
  if (sweeps) lastWindowSweep_ = now;
  tasks_.start(probe(around_.displays.flip().toQuartz(pointer), sweeps));
}

Task<> HoverTrigger::probe(QuartzPoint at, bool sweepsForWindow) {
  Probe probe;
  {
    const ScopedFlag inFlight(probeInFlight_);
    probe = co_await queue_.ax([&] { return look(at, sweepsForWindow); });
  }
  if (probe.window && onWindowUnderCursor) onWindowUnderCursor(*probe.window);
  handle(probe.button);
}

void HoverTrigger::handle(const std::optional<Button>& found) {
  if (!found) {
    candidateButton_.reset();
    dwellWork_.cancel();
    if (std::exchange(reportedButton_, std::nullopt) && onExit) onExit();
    return;
  }
  if (found->element == candidateButton_) return;
  candidateButton_ = found->element;
  // Back on the one that was reported, it does not rest on the other any more.
  found->element == reportedButton_ ? dwellWork_.cancel() : scheduleDwell();
}

void HoverTrigger::scheduleDwell() {
  dwellWork_ = around_.queues.main().after(dwell, [this] { tasks_.start(confirm()); });
}

Task<> HoverTrigger::confirm() {
  const auto at = around_.displays.flip().toQuartz(around_.monitors.pointerLocation());
  const auto found = co_await queue_.ax([&] { return look(at, false).button; });
  if (!found || candidateButton_ != found->element) co_return;
  reportedButton_ = found->element;
  if (onEnter) onEnter(found->window, around_.displays.flip().toAppKit(found->frame));
}

HoverTrigger::Probe HoverTrigger::look(QuartzPoint at, bool sweepsForWindow) const {
  const auto element =
      around_.accessibility.elementAtPosition(around_.accessibility.systemWide(), at, patience);
  if (!element || element->pid() == around_.ownProcess) return {};
  if (AX::string(*element, AX::attribute::subrole, patience) == AX::subrole::minimizeButton) {
    auto window = windowOf(*element);
    const auto frame = AX::frame(*element, patience);
    if (!window || !frame) return {};
    return {.button = Button{*element, *window, *frame}, .window = window};
  }
  return {.button = std::nullopt, .window = sweepsForWindow ? windowOf(*element) : std::nullopt};
}

std::optional<TargetWindow> HoverTrigger::windowOf(const AXElement& element) const {
  const auto window = AX::enclosingWindow(element, patience);
  const auto pid = window ? window->pid() : std::unexpected(AXError::noValue);
  if (!pid) return std::nullopt;
  return TargetWindow{*window, *pid};
}

}  // namespace pellow
