#include "platforms/simulated/panels.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/open_menu.h"

namespace pellow::simulated {
namespace {

const ViewNode* findView(const ViewNode& root, std::string_view path) {
  if (path.empty()) return &root;
  const auto slash = path.find('/');
  const auto key = path.substr(0, slash);
  for (const auto& child : root.children)
    if (child->key == key)
      return slash == path.npos ? child.get() : findView(*child, path.substr(slash + 1));
  return nullptr;
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
    : panels_(panels), id_(id), name_(std::move(name)), shadow_(shadow), motion_(panels.queue_) {
  pointer_.onNeedsPointer = [this] { panels_.changed(); };
  panels_.toFront(*this);
}

Panel::~Panel() { panels_.remove(*this); }

void Panel::setContent(const View& root) {
  tree_.update(root);
  panels_.changed();
}

void Panel::setFrame(const AppKitRect& frame) {
  animation_ = std::nullopt;
  motion_.jump(frame);
  panels_.changed();
}

void Panel::animate(const AppKitRect& frame, double opacity, Seconds duration,
                    AnimationTiming timing, std::function<void()> onDone) {
  motion_.advance(progress());
  motion_.start(frame, opacity, std::move(onDone));
  animation_ = Animation{.start = panels_.system_.scheduler.now(),
                         .duration = std::max(duration, 0.0),
                         .timing = timing};
  animation_->end = panels_.system_.mainLoop.after(animation_->duration, [this] { arrive(); });
  panels_.changed();
}

void Panel::arrive() {
  animation_ = std::nullopt;
  motion_.arrive();
  panels_.changed();
}

// From 0 to 1, as the timing has it.
double Panel::progress() const {
  if (!animation_) return 1;
  const auto passed = panels_.system_.scheduler.now() - animation_->start;
  if (passed >= animation_->duration) return 1;
  return eased(passed / animation_->duration, animation_->timing);
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
  panels_.forgetPress(*this);
  panels_.changed();
  pointer_.endPress();
}

const ViewNode* Panel::view(std::string_view path) const {
  return tree_.root() ? findView(*tree_.root(), path) : nullptr;
}

const ViewNode* Panel::viewNamed(std::string_view accessibleName) const {
  const ViewNode* found = nullptr;
  tree_.visit([&](const auto& node, const ViewTransform&) {
    if (!found && node->look.accessibleName == accessibleName) found = node.get();
  });
  return found;
}

AppKitPoint Panel::centre(std::string_view path) const {
  const auto* const found = view(path);
  if (!found) throw std::out_of_range(fmt::format("no view \"{}\" in {}", path, name_));
  const auto panel = frameNow();
  const auto area = tree_.stretchTo(panel.size).toPanel(tree_.areaOf(*found).value());
  return panel.origin + AppKitVector{area.midX(), area.midY()};
}

void Panel::openContextMenu(OpenMenu& menu, AppKitPoint at) {
  if (auto context = pointer_.contextMenuAt(toContent(at)))
    contextMenu_ = menu.open(std::move(context->menu), std::move(context->hover));
}

ViewPoint Panel::toContent(AppKitPoint onScreen) const {
  const auto panel = frameNow();
  const auto inPanel = onScreen - panel.origin;
  return tree_.stretchTo(panel.size).toContent({inPanel.dx, inPanel.dy});
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
  forgetPress(panel);
  changed();
}

// Of a panel that goes or is hidden; the pointer is free again.
void Panels::forgetPress(const Panel& panel) {
  if (pressed_ == panel.id()) pressed_ = noPanel;
}

// A view that comes under the pointer is entered, and one that goes is left.
void Panels::changed() {
  if (pendingUpdate_) return;
  pendingUpdate_ = system_.mainLoop.after(0, [this] {
    pendingUpdate_.cancel();
    updateHover();
  });
}

Panel* Panels::panelAt(AppKitPoint point) const {
  const auto& state = system_.state;
  const auto isOn = [&](const Panel& panel) {  // a hot spot is an upper left corner, as for windows
    return state.flip().toQuartz(panel.frameNow()).contains(state.toQuartz(point));
  };
  const auto topmost = [&](PanelLevel level) -> Panel* {
    for (auto* const panel : frontToBack_)
      if (panel->isVisible() && !panel->ignoresMouseEvents() && panel->level() == level &&
          isOn(*panel))
        return panel;
    return nullptr;
  };
  if (!system_.processRuns()) return nullptr;
  if (auto* const above = topmost(PanelLevel::statusWindow)) return above;
  if (state.windowAt(state.toQuartz(point))) return nullptr;
  return topmost(PanelLevel::desktopIcons);
}

const Panel* Panels::withID(PanelID id) const {
  const auto* const panel = find(id);
  return panel && panel->isVisible() ? panel : nullptr;
}

Panel* Panels::find(PanelID id) const {
  const auto found = std::ranges::find(frontToBack_, id, &Panel::id);
  return found == frontToBack_.end() ? nullptr : *found;
}

// Every callback of a view may hide or end panels.

void Panels::pointerMoved() {
  if (pressed_ == noPanel) return updateHover();
  goOver(pressed_);
  const auto point = system_.state.pointer;
  if (auto* const panel = find(pressed_)) panel->pointer().moved(panel->toContent(point), point);
}

void Panels::updateHover() {
  const auto point = system_.state.pointer;
  const auto* const there = panelAt(point);
  const auto now = there ? there->id() : noPanel;
  auto* const pressed = find(pressed_);
  if (pressed && pressed->pointer().isDragging()) return;
  goOver(!pressed || pressed_ == now ? now : noPanel);
  if (auto* const panel = find(hovered_)) panel->pointer().isAt(panel->toContent(point));
}

// Not only the last one is left: a context menu may have held the hover of another.
void Panels::goOver(PanelID panel) {
  hovered_ = panel;
  std::vector<PanelID> others;
  for (const auto* const each : frontToBack_)
    if (each->id() != panel) others.push_back(each->id());
  for (const auto other : others)
    if (auto* const left = find(other)) left->pointer().isAt(std::nullopt);
}

bool Panels::press() {
  const auto point = system_.state.pointer;
  auto* const panel = panelAt(point);
  if (!panel) return false;
  pressed_ = panel->id();
  panel->pointer().pressed(panel->toContent(point), point);
  return true;
}

void Panels::release() {
  auto* const panel = find(std::exchange(pressed_, noPanel));
  changed();
  if (panel) panel->pointer().released(panel->toContent(system_.state.pointer));
}

void Panels::clickView(const std::string& panelName, const std::string& path) {
  if (!clickable(panelName, path))
    throw std::out_of_range(fmt::format("nothing to click at \"{}\" in {}", path, panelName));
  system_.mainLoop.post([this, panelName, path] {
    if (auto* const panel = clickable(panelName, path)) panel->pointer().click(*panel->view(path));
  });
}

Panel* Panels::clickable(const std::string& name, const std::string& path) const {
  for (const auto* panel : visible(name))
    if (const auto* view = panel->view(path); view && view->actions.onClick)
      return find(panel->id());
  return nullptr;
}

}  // namespace pellow::simulated
