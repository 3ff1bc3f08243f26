#include "access/target_window.h"

#include <array>
#include <cmath>
#include <utility>

#include "access/pellow_error.h"

namespace pellow {
namespace {

constexpr double reachedWithin = 2.0;  // points, on each axis
constexpr Seconds readEvery = 0.02;
constexpr Seconds readFor = 0.6;

bool isReached(QuartzPoint point, QuartzPoint target) {
  return std::abs(point.x - target.x) <= reachedWithin &&
         std::abs(point.y - target.y) <= reachedWithin;
}

QuartzPoint readPosition(const AXElement& element, Seconds timeout) {
  const auto value = element.copyAttribute(AX::attribute::position, timeout);
  const auto* const position = value ? std::get_if<QuartzPoint>(&*value) : nullptr;
  if (!position) throw PellowError::moveFailed(AXError::cannotComplete);
  return *position;
}

}  // namespace

std::vector<TargetWindow> TargetWindow::windows(Accessibility& accessibility, ProcessID pid,
                                                Seconds timeout) {
  const auto all = everyWindow(accessibility, pid, AX::timeout::application);
  std::vector<TargetWindow> standard;
  if (!all) return standard;
  for (const auto& window : *all) {
    if (AX::string(window.element, AX::attribute::subrole, timeout) == AX::subrole::standardWindow)
      standard.push_back(window);
  }
  return standard;
}

std::expected<std::vector<TargetWindow>, AXError> TargetWindow::everyWindow(
    Accessibility& accessibility, ProcessID pid, Seconds timeout) {
  auto listed = accessibility.application(pid).copyAttribute(AX::attribute::windows, timeout);
  if (!listed) return std::unexpected(listed.error());
  std::vector<TargetWindow> windows;
  if (auto* const elements = std::get_if<std::vector<AXElement>>(&*listed))
    for (auto& element : *elements)
      if (const auto owner = element.pid()) windows.push_back({std::move(element), *owner});
  return windows;
}

std::optional<TargetWindow> TargetWindow::frontmost(Accessibility& accessibility,
                                                    std::optional<ProcessID> frontmostApplication) {
  if (!frontmostApplication) return std::nullopt;
  auto element = AX::child(accessibility.application(*frontmostApplication),
                           AX::attribute::focusedWindow, AX::timeout::application);
  if (!element) return std::nullopt;
  const auto owner = element->pid();
  if (!owner) return std::nullopt;
  return TargetWindow{std::move(*element), *owner};
}

std::optional<bool> TargetWindow::isGone() const {
  const auto role = element.copyAttribute(AX::attribute::role, AX::timeout::application);
  if (!role && role.error() == AXError::cannotComplete) return std::nullopt;
  return !role && role.error() == AXError::invalidUIElement;
}

WindowState TargetWindow::state(Seconds timeout) const {
  constexpr std::array attributes{AX::attribute::role, AX::attribute::title,
                                  AX::attribute::position, AX::attribute::size,
                                  AX::attribute::minimized};
  const auto answers = element.copyMultipleAttributeValues(attributes, timeout);
  const auto& role = answers[0];
  if (!role && role.error() == AXError::cannotComplete) return {.answers = false};
  WindowState state{.title = AX::held<std::string>(answers[1]).value_or(""),
                    .isMinimized = AX::held<bool>(answers[4]).value_or(false)};
  const auto position = AX::held<QuartzPoint>(answers[2]);
  const auto size = AX::held<Size>(answers[3]);
  if (position && size) state.frame = QuartzRect(*position, *size);
  return state;
}

QuartzPoint TargetWindow::move(QuartzPoint point, Verify verify, Clock& clock,
                               Seconds timeout) const {
  const auto written = element.setAttribute(AX::attribute::position, point, timeout);
  if (!written) throw PellowError::moveFailed(written.error());
  if (verify == Verify::no) return point;

  const auto deadline = clock.now() + readFor;
  while (true) {
    const auto position = readPosition(element, timeout);
    if (isReached(position, point)) return position;
    clock.sleep(readEvery);
    if (clock.now() > deadline) return position;
  }
}

}  // namespace pellow
