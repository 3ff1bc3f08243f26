#include "views/panel_pointer.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace pellow {
namespace {

constexpr double dragThreshold = 3;  // points
constexpr Seconds fadeIn = 0.06;
constexpr Seconds fadeOut = 0.15;

bool contains(const ViewTree::Nodes& nodes, const std::shared_ptr<ViewNode>& node) {
  return std::ranges::find(nodes, node) != nodes.end();
}

}  // namespace

void PanelPointer::pressed(ViewPoint at, AppKitPoint onScreen) {
  if (!finishPress() || calls_->haveEnded) return;
  const auto nodes = tree_.at(at);
  Press press;
  press.clicks = innermost(nodes, [](const auto& node) { return bool(node.actions.onClick); });
  press.from = onScreen;
  // A view with a click and no drag keeps out the drags of those that it stands on.
  const auto answers = [](const auto& node) { return node.actions.onClick || node.actions.drag; };
  if (const auto node = innermost(nodes, answers)) press.drag = node->actions.drag;
  press_ = std::move(press);
  needsDisplay(press_->clicks);
}

void PanelPointer::moved(ViewPoint at, AppKitPoint onScreen) {
  if (dragTo(onScreen)) isAt(at);
}

void PanelPointer::released(ViewPoint at) {
  const bool isClick = press_ && press_->clicks && contains(tree_.at(at), press_->clicks);
  const auto clicked = isClick ? press_->clicks : nullptr;
  if (finishPress() && clicked) click(*clicked);
}

void PanelPointer::endPress() { finishPress(); }

// False once it is over with this object.
bool PanelPointer::finishPress() {
  const auto press = std::exchange(press_, std::nullopt);
  if (!press) return true;
  if (press->isDragging) return call(press->drag.onEnded);
  needsDisplay(press->clicks);
  return true;
}

// False once it is over with this object.
bool PanelPointer::dragTo(AppKitPoint onScreen) {
  if (!press_ || !press_->drag) return true;
  const auto movedBy = onScreen - press_->from;
  const auto actions = press_->drag;
  if (!press_->isDragging) {
    if (std::hypot(movedBy.dx, movedBy.dy) < dragThreshold) return true;
    press_->isDragging = true;
    needsDisplay(std::exchange(press_->clicks, nullptr));
    if (!call(actions.onBegan)) return false;
  }
  // `onBegan` may have hidden the panel.
  if (!isDragging() || !actions.onDragged) return true;
  return call([&] { actions.onDragged(movedBy); });
}

void PanelPointer::isAt(std::optional<ViewPoint> point) {
  if (calls_->haveEnded || isDragging() || !hoverHold_.expired()) return;
  const auto now = point ? tree_.at(*point) : ViewTree::Nodes();
  ViewTree::Nodes left;
  ViewTree::Nodes entered;
  for (const auto& weak : hovered_)
    if (auto node = weak.lock(); node && node->isHovered && !contains(now, node))
      left.push_back(std::move(node));
  std::ranges::copy_if(now, std::back_inserter(entered),
                       [](const auto& node) { return !node->isHovered; });
  hovered_.assign(now.begin(), now.end());
  if (left.empty() && entered.empty()) return;
  std::ranges::reverse(left);  // from the inside out
  for (const auto& node : left) node->isHovered = false;
  for (const auto& node : entered) node->isHovered = true;
  if (onHighlightsBegin) onHighlightsBegin();
  if (tellHover(left, false)) tellHover(entered, true);
}

// A callback may take other views away. False once it is over with this object.
bool PanelPointer::tellHover(const ViewTree::Nodes& nodes, bool inside) {
  for (const auto& node : nodes) {
    const auto& onHoverChanged = node->actions.onHoverChanged;
    if (onHoverChanged && !call([onHoverChanged, inside] { onHoverChanged(inside); })) return false;
  }
  return true;
}

std::optional<PanelPointer::ContextMenu> PanelPointer::contextMenuAt(ViewPoint point) {
  if (press_) return std::nullopt;
  hoverHold_.reset();
  const auto calls = calls_;
  isAt(point);
  if (calls->haveEnded) return std::nullopt;
  const auto node =
      innermost(tree_.at(point), [](const auto& each) { return bool(each.actions.contextMenu); });
  if (!node) return std::nullopt;
  Menu menu;
  const auto ask = [&menu, contextMenu = node->actions.contextMenu] { menu = contextMenu(); };
  if (!call(ask) || menu.items.empty()) return std::nullopt;
  return ContextMenu{std::move(menu), holdHover()};
}

Subscription PanelPointer::holdHover() {
  auto hold = std::make_shared<HoverHold>();
  hoverHold_ = hold;
  return Subscription([this, calls = calls_, hold = std::move(hold)]() mutable {
    hold = nullptr;
    if (!calls->haveEnded && onNeedsPointer) onNeedsPointer();
  });
}

bool PanelPointer::call(const std::function<void()>& callback) {
  const auto calls = calls_;
  if (calls->haveEnded || !callback) return !calls->haveEnded;
  const auto kept = callback;  // it may replace its own view
  ++calls->running;
  kept();
  --calls->running;
  return !calls->haveEnded;
}

void PanelPointer::giveUp() {
  calls_->haveEnded = true;
  press_.reset();
}

bool PanelPointer::isPressing(const ViewNode& node) const {
  return press_ && press_->clicks.get() == &node && node.isHovered;
}

void PanelPointer::needsDisplay(const std::shared_ptr<ViewNode>& node) const {
  if (!node || !onNeedsDisplay) return;
  if (const auto area = tree_.areaOf(*node)) onNeedsDisplay(*area);
}

bool PanelPointer::advanceHighlights(Seconds elapsed) {
  bool goesOn = false;
  tree_.visit([&](const std::shared_ptr<ViewNode>& node, const ViewTransform& toContent) {
    const double goal = node->isHovered ? 1 : 0;
    if (!node->look.highlightsOnHover || node->highlight == goal) return;
    const double step = node->isHovered ? elapsed / fadeIn : -elapsed / fadeOut;
    node->highlight = std::clamp(node->highlight + step, 0.0, 1.0);
    goesOn = goesOn || node->highlight != goal;
    if (onNeedsDisplay) onNeedsDisplay(toContent.map(node->bounds()));
  });
  return goesOn;
}

}  // namespace pellow
