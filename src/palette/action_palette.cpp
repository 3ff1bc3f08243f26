#include "palette/action_palette.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace pellow {
namespace {

constexpr Seconds hideDelay = 0.2;
constexpr double gap = 4;     // to the button
constexpr double margin = 4;  // inside the visible frame

const Screen* firstTouchedBy(const AppKitRect& frame, const std::vector<Screen>& screens) {
  const auto found = std::ranges::find_if(
      screens, [&](const Screen& screen) { return screen.frame.intersectionArea(frame) > 0; });
  return found == screens.end() ? nullptr : &*found;
}

}  // namespace

void ActionPalette::show(const TargetWindow& window, const AppKitRect& buttonFrame) {
  hideWork_.cancel();
  window_ = window;
  buttonFrame_ = buttonFrame;
  if (!panel_) panel_ = around_.panels.makePanel("pellow-palette", WindowShadow::yes);
  auto content = paletteView(rows());
  content.actions.onHoverChanged = [this](bool inside) {
    if (!inside) scheduleHide();
  };
  const Size size{content.frame.width(), content.frame.height()};
  panel_->setFrame({origin(size), size});
  panel_->setContent(content);
  panel_->orderFront();
  clickMonitor_ = around_.monitors.addGlobalMouseDown([this] { hideImmediately(); });
}

// Nobody says when the pointer leaves the gap, so it is looked for until it is elsewhere.
void ActionPalette::scheduleHide() {
  if (!window_) return;
  hideWork_ = around_.mainQueue.every(hideDelay, [this] {
    if (!isPointerNear()) hideImmediately();
  });
}

void ActionPalette::hideImmediately() {
  hideWork_.cancel();
  clickMonitor_.reset();
  if (!std::exchange(window_, std::nullopt)) return;
  panel_->orderOut();
  if (onHidden) onHidden();
}

std::vector<PaletteRow> ActionPalette::rows() {
  const bool appMode = around_.preferences.mechanism() == Mechanism::hideApp ||
                       around_.preferences.tabScope() == TabScope::app;
  const auto application = around_.workspace.application(window_->pid);
  const bool hasName = application && !application->localizedName.empty();
  std::vector<PaletteRow> rows;
  if (appMode) {
    addRowsForZones(rows, "Pellow " + (hasName ? application->localizedName : "App"),
                    "square.stack", onPellowApp);
  } else {
    addRowsForZones(rows, around_.zones.zones().size() > 1 ? "Pellow" : "Pellow Window",
                    "rectangle", onPellowWindow);
    addRowsForZones(rows, "Pellow All Windows of App", "square.stack", onPellowApp);
  }
  rows.emplace_back(PaletteSeparator{});
  rows.emplace_back(PaletteAction{"Pellow Settings…", "gearshape", hidingAfter(onOpenSettings)});
  return rows;
}

void ActionPalette::addRowsForZones(std::vector<PaletteRow>& rows, const std::string& title,
                                    std::string_view symbol, const Command& command) {
  const auto& zones = around_.zones.zones();
  for (const auto& zone : zones) {
    rows.emplace_back(
        PaletteAction{.title = zones.size() > 1 ? fmt::format("{} to {}", title, zone.name) : title,
                      .symbol = std::string(symbol),
                      .handler = hidingAfter([command, window = *window_, id = zone.id] {
                        if (command) command(window, id);
                      })});
  }
}

std::function<void()> ActionPalette::hidingAfter(std::function<void()> action) {
  return [this, action = std::move(action)] {
    if (action) action();
    hideImmediately();
  };
}

AppKitPoint ActionPalette::origin(Size size) const {
  const auto& button = buttonFrame_;
  AppKitPoint origin{button.midX() - size.width / 2, button.minY() - gap - size.height};
  const auto screens = around_.screens.all();
  const auto* const screen = firstTouchedBy(button, screens);
  if (!screen) return origin;
  const auto& visible = screen->visibleFrame;
  origin.x = std::max(origin.x, visible.minX() + margin);
  origin.x = std::min(origin.x, visible.maxX() - size.width - margin);
  if (origin.y < visible.minY() + margin) origin.y = button.maxY() + gap;
  return origin;
}

AppKitRect ActionPalette::protectedRect() const {
  const auto frame = panel_->frame();
  const bool isBelow = frame.maxY() <= buttonFrame_.minY();
  const auto bottom = isBelow ? frame.minY() : buttonFrame_.maxY();
  const auto top = isBelow ? buttonFrame_.minY() : frame.maxY();
  return {frame.minX(), bottom, frame.width(), top - bottom};
}

bool ActionPalette::isPointerNear() const {
  const auto pointer = around_.monitors.pointerLocation();
  return protectedRect().contains(pointer) || buttonFrame_.contains(pointer);
}

}  // namespace pellow
