#include "access/displays.h"

namespace pellow {

Displays::Displays(Screens& screens)
    : screens_(screens), changes_(screens.onDidChangeParameters([this] { recordMainHeight(); })) {}

void Displays::recordMainHeight() {
  const auto screens = screens_.all();
  flip_ = {screens.empty() ? 0 : screens.front().frame.height()};
}

std::vector<QuartzRect> Displays::frames() const {
  std::vector<QuartzRect> frames;
  for (const auto& screen : screens_.all()) frames.push_back(flip_.toQuartz(screen.frame));
  return frames;
}

std::optional<QuartzRect> Displays::mainVisibleFrame() const {
  const auto screen = screens_.main();
  if (!screen) return std::nullopt;
  return flip_.toQuartz(screen->visibleFrame);
}

std::optional<double> Displays::visibleFraction(const QuartzRect& window) const {
  if (window.area() <= 0) return std::nullopt;
  double visible = 0;
  for (const auto& frame : frames()) visible += window.intersectionArea(frame);
  return visible / window.area();
}

bool Displays::isHidden(const QuartzRect& window) const {
  return visibleFraction(window).value_or(0) <= hiddenFraction;
}

std::optional<DisplayID> Displays::screenID(const QuartzRect& window) const {
  const auto screens = screens_.all();
  const auto* const most = screenWithMostOf(flip_.toAppKit(window), screens);
  return most ? most->displayID : std::nullopt;
}

}  // namespace pellow
