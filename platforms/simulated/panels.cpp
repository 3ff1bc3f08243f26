#include "platforms/simulated/panels.h"

#include <algorithm>
#include <cmath>
#include <ranges>
#include <stdexcept>
#include <utility>

namespace pellow::simulated {
namespace {

// How far from the press the pointer must go to drag.
constexpr double dragThreshold = 3;

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

// The path of the topmost view with the action, at a point in the view's own space.
template <class Action>
std::optional<std::string> pathAt(const View& view, const std::string& path, ViewPoint point,
                                  Action ViewActions::* action) {
  for (const auto& child : std::views::reverse(view.children)) {
    if (!child.frame.contains(point)) continue;
    if (auto found = pathAt(child, below(path, child.key), inside(child, point), action))
      return found;
  }
  return view.actions.*action ? std::optional(path) : std::nullopt;
}

ViewPoint inside(const Panel& panel, AppKitPoint point) {
  const auto frame = panel.frameNow();
  return {point.x - frame.minX(), point.y - frame.minY()};
}

template <class Action>
std::optional<std::string> pathAt(const Panel& panel, AppKitPoint point,
                                  Action ViewActions::* action) {
  return pathAt(panel.content(), "", inside(panel, point), action);
}

double eased(double progress, AnimationTiming timing) {
  const auto left = 1 - progress;
  switch (timing) {
    case AnimationTiming::linear:
      return progress;
    case AnimationTiming::easeOut:
      return 1 - left * left;
    case AnimationTiming::easeInOut:
      return progress < 0.5 ? 2 * progress * progress : 1 - 2 * left * left;
  }
  return progress;
}

}  // namespace

// The panel

Panel::Panel(Panels& panels, PanelID id, std::string name, WindowShadow shadow)
    : panels_(panels), id_(id), name_(std::move(name)), shadow_(shadow) {
  panels_.toFront(*this);
}

Panel::~Panel() { panels_.remove(*this); }

void Panel::setContent(View root) {
  content_ = std::move(root);
  panels_.changed();
}

void Panel::setFrame(const AppKitRect& frame) {
  animation_ = std::nullopt;
  frame_ = frame;
  panels_.changed();
}

void Panel::animate(const AppKitRect& frame, double opacity, Seconds duration,
                    AnimationTiming timing, std::function<void()> onDone) {
  Animation next{.from = frameNow(),
                 .fromOpacity = opacityNow(),
                 .start = panels_.system_.scheduler.now(),
                 .duration = std::max(duration, 0.0),
                 .timing = timing,
                 .onDone = std::move(onDone)};
  next.end = panels_.system_.mainLoop.after(next.duration, [this] { arrive(); });
  animation_ = std::move(next);
  frame_ = frame;
  opacity_ = opacity;
  panels_.changed();
}

void Panel::arrive() {
  const auto arrived = std::exchange(animation_, std::nullopt);
  panels_.changed();
  if (arrived->onDone) arrived->onDone();
}

// From 0 to 1, as the timing has it.
double Panel::progress() const {
  if (!animation_) return 1;
  const auto passed = panels_.system_.scheduler.now() - animation_->start;
  if (passed >= animation_->duration) return 1;
  return eased(passed / animation_->duration, animation_->timing);
}

AppKitRect Panel::frameNow() const {
  const auto share = progress();
  if (share == 1) return frame_;
  const auto& from = animation_->from;
  return {std::lerp(from.minX(), frame_.minX(), share),
          std::lerp(from.minY(), frame_.minY(), share),
          std::lerp(from.width(), frame_.width(), share),
          std::lerp(from.height(), frame_.height(), share)};
}

double Panel::opacityNow() const {
  const auto share = progress();
  return share == 1 ? opacity_ : std::lerp(animation_->fromOpacity, opacity_, share);
}

void Panel::setLevel(PanelLevel level) {
  level_ = level;
  panels_.changed();
}

void Panel::setIgnoresMouseEvents(bool ignores) {
  ignoresMouseEvents_ = ignores;
  panels_.changed();
}

void Panel::orderFront() {
  isVisible_ = true;
  panels_.toFront(*this);
  panels_.changed();
}

void Panel::orderOut() {
  isVisible_ = false;
  panels_.changed();
  panels_.hidden(id_);
}

const View* Panel::view(std::string_view path) const { return findView(content_, path); }
const View* Panel::viewNamed(std::string_view accessibleName) const {
  return findNamed(content_, accessibleName);
}

AppKitPoint Panel::centre(std::string_view path) const {
  AppKitPoint origin = frameNow().origin;
  const auto* view = &content_;
  for (const auto key : std::views::split(path, '/')) {
    if (path.empty()) break;
    const auto found = std::ranges::find(view->children, std::string_view(key), &View::key);
    if (found == view->children.end())
      throw std::out_of_range(fmt::format("no view \"{}\" in {}", path, name_));
    view = &*found;
    origin = origin + AppKitVector{view->frame.minX(), view->frame.minY()};
  }
  return origin + AppKitVector{view->frame.width() / 2, view->frame.height() / 2};
}

// All panels

std::unique_ptr<pellow::Panel> Panels::makePanel(std::string name, WindowShadow shadow) {
  return std::make_unique<Panel>(*this, ++lastID_, std::move(name), shadow);
}

std::vector<const Panel*> Panels::visible(std::string_view name) const {
  std::vector<const Panel*> found;
  if (!system_.processRuns()) return found;
  for (const auto level : {PanelLevel::statusWindow, PanelLevel::desktopIcons})
    for (const auto* panel : frontToBack_)
      if (panel->isVisible() && panel->level() == level && panel->name() == name)
        found.push_back(panel);
  return found;
}

const Panel& Panels::panel(std::string_view name) const {
  const auto found = visible(name);
  if (found.size() != 1)
    throw std::out_of_range(fmt::format("{} panels {} show", found.size(), name));
  return *found.front();
}

void Panels::toFront(Panel& panel) {
  std::erase(frontToBack_, &panel);
  frontToBack_.insert(frontToBack_.begin(), &panel);
}

void Panels::remove(const Panel& panel) {
  std::erase(frontToBack_, &panel);
  std::erase_if(hovered_, [&](const Hovered& view) { return view.panel == &panel; });
  changed();
}

// A view that comes under the pointer is entered, and one that goes is left.
void Panels::changed() {
  if (pendingUpdate_) return;
  pendingUpdate_ = system_.mainLoop.after(0, [this] {
    pendingUpdate_.cancel();
    updateHover();
  });
}

const Panel* Panels::panelAt(AppKitPoint point) const {
  const auto topmost = [&](PanelLevel level) -> const Panel* {
    for (const auto* panel : frontToBack_)
      if (panel->isVisible() && !panel->ignoresMouseEvents() && panel->level() == level &&
          panel->frameNow().contains(point))
        return panel;
    return nullptr;
  };
  if (!system_.processRuns()) return nullptr;
  if (const auto* above = topmost(PanelLevel::statusWindow)) return above;
  if (system_.state.windowAt(system_.state.toQuartz(point))) return nullptr;
  return topmost(PanelLevel::desktopIcons);
}

const Panel* Panels::withID(PanelID id) const {
  for (const auto* panel : frontToBack_)
    if (panel->id() == id && panel->isVisible()) return panel;
  return nullptr;
}

bool Panels::exists(PanelID id) const {
  return std::ranges::find(frontToBack_, id, &Panel::id) != frontToBack_.end();
}

std::vector<Panels::Hovered> Panels::viewsAt(AppKitPoint point) const {
  const auto* panel = panelAt(point);
  if (!panel) return {};
  std::vector<std::string> paths{""};
  collectAt(panel->content(), "", inside(*panel, point), paths);
  std::vector<Hovered> views;
  for (auto& path : paths) views.push_back({panel, std::move(path)});
  return views;
}

void Panels::pointerMoved() { press_ ? drag() : updateHover(); }

void Panels::updateHover() {
  if (press_) return;
  const auto before = std::exchange(hovered_, viewsAt(system_.state.pointer));
  const auto after = hovered_;
  for (const auto& view : before)
    if (std::ranges::find(after, view) == after.end()) hoverChanged(view, false);
  for (const auto& view : after)
    if (std::ranges::find(before, view) == before.end()) hoverChanged(view, true);
}

// An earlier callback may have taken the panel or the view away.
void Panels::hoverChanged(const Hovered& hovered, bool inside) const {
  if (std::ranges::find(frontToBack_, hovered.panel) == frontToBack_.end()) return;
  const auto* view = hovered.panel->view(hovered.path);
  if (!view) return;
  if (const auto onHoverChanged = view->actions.onHoverChanged) onHoverChanged(inside);
}

bool Panels::press() {
  const auto point = system_.state.pointer;
  const auto* panel = panelAt(point);
  if (!panel) return false;
  press_ = Press{panel->id(), point, pathAt(*panel, point, &ViewActions::onClick)};
  if (const auto dragged = pathAt(*panel, point, &ViewActions::drag))
    press_->drag = panel->view(*dragged)->actions.drag;
  return true;
}

// Every callback may hide or end the panel.
void Panels::drag() {
  const auto actions = press_->drag;
  const auto movedBy = system_.state.pointer - press_->at;
  const auto goesOn = [&] { return press_ && exists(press_->panel); };
  if (!actions || !goesOn()) return;
  if (!press_->isDragging) {
    if (std::hypot(movedBy.dx, movedBy.dy) < dragThreshold) return;
    press_->isDragging = true;
    if (actions.onBegan) actions.onBegan();
  }
  if (goesOn() && actions.onDragged) actions.onDragged(movedBy);
}

void Panels::release() {
  const auto press = std::exchange(press_, std::nullopt);
  changed();
  if (!press || !exists(press->panel)) return;
  if (press->isDragging) {
    if (press->drag.onEnded) press->drag.onEnded();
    return;
  }
  const auto* panel = panelAt(system_.state.pointer);
  if (!press->clickPath || !panel || panel->id() != press->panel) return;
  if (pathAt(*panel, system_.state.pointer, &ViewActions::onClick) != press->clickPath) return;
  const auto onClick = panel->view(*press->clickPath)->actions.onClick;
  onClick();
}

// A press on it is over. `onEnded` may end the panel.
void Panels::hidden(PanelID id) {
  if (!press_ || press_->panel != id) return;
  const auto press = std::exchange(press_, std::nullopt);
  if (press->isDragging && press->drag.onEnded) press->drag.onEnded();
}

std::optional<Menu> Panels::contextMenuAt(AppKitPoint point) const {
  const auto* panel = panelAt(point);
  if (!panel) return std::nullopt;
  const auto path = pathAt(*panel, point, &ViewActions::contextMenu);
  if (!path) return std::nullopt;
  const auto contextMenu = panel->view(*path)->actions.contextMenu;
  return contextMenu();
}

void Panels::clickView(const std::string& panelName, const std::string& path) {
  if (!clickOf(panelName, path))
    throw std::out_of_range(fmt::format("nothing to click at \"{}\" in {}", path, panelName));
  system_.mainLoop.post([this, panelName, path] {
    if (const auto onClick = clickOf(panelName, path)) onClick();
  });
}

std::function<void()> Panels::clickOf(const std::string& panelName, const std::string& path) const {
  for (const auto* panel : visible(panelName))
    if (const auto* view = panel->view(path); view && view->actions.onClick)
      return view->actions.onClick;
  return nullptr;
}

}  // namespace pellow::simulated
