#include "platforms/simulated/simulated_panels.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace pellow::simulated {
namespace {

std::string below(const std::string& path, const std::string& key) {
  return path.empty() ? key : path + "/" + key;
}

const View* findView(const View& root, std::string_view path) {
  if (path.empty()) return &root;
  const auto slash = path.find('/');
  const auto found = std::ranges::find(root.children, path.substr(0, slash), &View::key);
  if (found == root.children.end()) return nullptr;
  return slash == path.npos ? &*found : findView(*found, path.substr(slash + 1));
}

const View* findNamed(const View& root, std::string_view accessibleName) {
  if (root.look.accessibleName == accessibleName) return &root;
  for (const auto& child : root.children)
    if (const auto* found = findNamed(child, accessibleName)) return found;
  return nullptr;
}

ViewPoint inside(const View& child, ViewPoint point) {
  return {point.x - child.frame.minX(), point.y - child.frame.minY()};
}

// Paths of all views below `view` that contain the point, which is in the view's own space.
void collectAt(const View& view, const std::string& path, ViewPoint point,
               std::vector<std::string>& paths) {
  for (const auto& child : view.children) {
    if (!child.frame.contains(point)) continue;
    const auto childPath = below(path, child.key);
    paths.push_back(childPath);
    collectAt(child, childPath, inside(child, point), paths);
  }
}

// The topmost view with something to click, at a point in the view's own space.
const View* clickableAt(const View& view, ViewPoint point) {
  for (const auto& child : std::views::reverse(view.children)) {
    if (!child.frame.contains(point)) continue;
    if (const auto* found = clickableAt(child, inside(child, point))) return found;
  }
  return view.actions.onClick ? &view : nullptr;
}

ViewPoint inside(const SimulatedPanel& panel, AppKitPoint point) {
  return {point.x - panel.frame().minX(), point.y - panel.frame().minY()};
}

}  // namespace

// The panel

SimulatedPanel::SimulatedPanel(SimulatedPanels& panels, std::string name)
    : panels_(panels), name_(std::move(name)) {
  panels_.toFront(*this);
}

SimulatedPanel::~SimulatedPanel() { panels_.remove(*this); }

void SimulatedPanel::setContent(const View& root) {
  content_ = root;
  panels_.changed();
}

void SimulatedPanel::setFrame(const AppKitRect& frame) {
  frame_ = frame;
  panels_.changed();
}

void SimulatedPanel::setLevel(PanelLevel level) {
  level_ = level;
  panels_.changed();
}

void SimulatedPanel::orderFront() {
  isVisible_ = true;
  panels_.toFront(*this);
  panels_.changed();
}

void SimulatedPanel::orderOut() {
  isVisible_ = false;
  panels_.changed();
}

const View* SimulatedPanel::view(std::string_view path) const { return findView(content_, path); }
const View* SimulatedPanel::viewNamed(std::string_view accessibleName) const {
  return findNamed(content_, accessibleName);
}

// All panels

std::unique_ptr<Panel> SimulatedPanels::makePanel(std::string name) {
  return std::make_unique<SimulatedPanel>(*this, std::move(name));
}

std::vector<const SimulatedPanel*> SimulatedPanels::visible(std::string_view name) const {
  std::vector<const SimulatedPanel*> found;
  if (!system_.processRuns()) return found;
  for (const auto level : {PanelLevel::statusWindow, PanelLevel::desktopIcons})
    for (const auto* panel : frontToBack_)
      if (panel->isVisible() && panel->level() == level && panel->name() == name)
        found.push_back(panel);
  return found;
}

void SimulatedPanels::toFront(SimulatedPanel& panel) {
  std::erase(frontToBack_, &panel);
  frontToBack_.insert(frontToBack_.begin(), &panel);
}

void SimulatedPanels::remove(const SimulatedPanel& panel) {
  std::erase(frontToBack_, &panel);
  std::erase_if(hovered_, [&](const Hovered& view) { return view.panel == &panel; });
  changed();
}

// A view that comes to stand under the pointer is entered, and one that goes is left.
void SimulatedPanels::changed() {
  if (pendingUpdate_) return;
  pendingUpdate_ = system_.mainLoop.after(0, [this] {
    pendingUpdate_.cancel();
    updateHover();
  });
}

const SimulatedPanel* SimulatedPanels::panelAt(AppKitPoint point) const {
  const auto topmost = [&](PanelLevel level) -> const SimulatedPanel* {
    for (const auto* panel : frontToBack_)
      if (panel->isVisible() && panel->level() == level && panel->frame().contains(point))
        return panel;
    return nullptr;
  };
  if (const auto* above = topmost(PanelLevel::statusWindow)) return above;
  if (system_.state.windowAt(point)) return nullptr;
  return topmost(PanelLevel::desktopIcons);
}

std::vector<SimulatedPanels::Hovered> SimulatedPanels::viewsAt(AppKitPoint point) const {
  const auto* panel = panelAt(point);
  if (!panel) return {};
  std::vector<std::string> paths{""};
  collectAt(panel->content(), "", inside(*panel, point), paths);
  std::vector<Hovered> views;
  for (auto& path : paths) views.push_back({panel, std::move(path)});
  return views;
}

void SimulatedPanels::updateHover() {
  const auto before = std::exchange(hovered_, viewsAt(system_.state.pointer));
  const auto after = hovered_;
  for (const auto& view : before)
    if (std::ranges::find(after, view) == after.end()) hoverChanged(view, false);
  for (const auto& view : after)
    if (std::ranges::find(before, view) == before.end()) hoverChanged(view, true);
}

// An earlier callback may have taken the panel or the view away.
void SimulatedPanels::hoverChanged(const Hovered& hovered, bool inside) const {
  if (std::ranges::find(frontToBack_, hovered.panel) == frontToBack_.end()) return;
  const auto* view = hovered.panel->view(hovered.path);
  if (!view) return;
  if (const auto onHoverChanged = view->actions.onHoverChanged) onHoverChanged(inside);
}

bool SimulatedPanels::click(AppKitPoint point) {
  const auto* panel = panelAt(point);
  if (!panel) return false;
  if (const auto* view = clickableAt(panel->content(), inside(*panel, point))) {
    const auto onClick = view->actions.onClick;
    onClick();
  }
  return true;
}

void SimulatedPanels::clickView(const std::string& panelName, const std::string& path) {
  for (const auto* panel : visible(panelName)) {
    const auto* view = panel->view(path);
    if (!view || !view->actions.onClick) continue;
    const auto onClick = view->actions.onClick;
    return onClick();
  }
}

}  // namespace pellow::simulated
