#include "strips/tab_strip_panel.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/former.h"
#include "strips/tab_item_view.h"
#include "strips/zone_name_view.h"

namespace pellow {
namespace {

constexpr double cornerRadius = 10;
constexpr double colourOpacity = 0.45;
constexpr double snapDistance = 48;  // points
constexpr Seconds slideDuration = 0.18;
constexpr Seconds collapseDelay = 0.35;

View background(std::string key, Size size, ViewContent content) {
  return {.key = std::move(key),
          .frame = {{}, size},
          .look = {.content = std::move(content), .cornerRadius = cornerRadius}};
}

}  // namespace

TabStripPanel::TabStripPanel(const Surroundings& surroundings)
    : around_(surroundings),
      panel_(around_.panels.makePanel("pellow-strip", WindowShadow::yes)),
      preview_({around_.panels, around_.mainQueue, around_.pointer}) {
  preview_.onHidden = [this] {
    previewing_.clear();
    if (!isHovered_ && !collapseWork_) pointerLeft();  // the preview held the strip out
  };
}

void TabStripPanel::render(const std::vector<ListedEntry>& entries, const Screen& screen,
                           const TabZone& zone) {
  const auto& preferences = around_.preferences;
  Shown next{screen, zone, preferences.pictureTabs()};
  const bool looksDifferent = shown_ != next || !showsTabsOf(entries);
  if (looksDifferent) layOut(entries, std::move(next));
  panel_->setLevel(preferences.value(preference::floatAboveWindows) ? PanelLevel::statusWindow
                                                                    : PanelLevel::desktopIcons);
  const bool wasExpanded = std::exchange(isExpanded_, shouldBeExpanded());
  if (wasExpanded != isExpanded_) slidesUntil_ = 0;
  place();
  if (looksDifferent) {
    // What comes beneath a pointer at rest was not pointed at.
    if (isHovered_) restsAt_ = around_.pointer.pointerLocation();
    panel_->setContent(content_);
  }
  panel_->orderFront();
  updatePreview();
}

// Whether every tab has the place that it had.
bool TabStripPanel::showsSameTabs(const std::vector<ListedEntry>& entries) const {
  return std::ranges::equal(tabs_, entries, [](const Tab& tab, const ListedEntry& listed) {
    return tab.entry == listed.entry || tab.id == listed.id;
  });
}

bool TabStripPanel::showsTabsOf(const std::vector<ListedEntry>& entries) const {
  return std::ranges::equal(tabs_, entries, {}, &Tab::entry, &ListedEntry::entry);
}

void TabStripPanel::layOut(const std::vector<ListedEntry>& entries, Shown next) {
  if (shown_ && shown_->pictureTabs != next.pictureTabs) {  // every tab looks different
    tabs_.clear();
    content_ = {};
  }
  shown_ = std::move(next);
  const auto& [screen, zone, pictureTabs] = *shown_;
  geometry_ = StripGeometry::make(items(entries),
                                  StripRun::make(zone.snap, screen.visibleFrame, pictureTabs));
  chrome_ = StripChrome::make(geometry_, zone);
  content_ = makeContent(makeTabs(entries));
}

View TabStripPanel::makeContent(View tabs) {
  const auto& zone = shown_->zone;
  const auto size = chrome_.totalSize;
  View content{
      .key = "strip",
      .frame = {{}, size},
      .look = {.tooltip = "Drag anywhere between the tabs to move this zone. Right-click for zone "
                          "options.",
               .accessibleName = zone.name},
      .actions = {.onHoverChanged = [this](bool inside) { hoverChanged(inside); },
                  .drag = {.onBegan = [this] { beginDrag(); },
                           .onDragged = [this](AppKitVector movedBy) { drag(movedBy); },
                           .onEnded = [this] { endDrag(); }},
                  .contextMenu = [this] { return zoneMenu(); }}};
  content.children.push_back(background("backdrop", size, Backdrop{}));
  if (const auto colour = Colour::parse(zone.colorHex.value_or("")))
    content.children.push_back(background("colour", size, Fill{colour->withAlpha(colourOpacity)}));
  if (zone.showsName)
    content.children.push_back(
        zoneNameView(zone.name, chrome_.nameBand, /*rotated=*/!chrome_.nameBandAcross));
  content.children.push_back(std::move(tabs));
  return content;
}

// The view of a tab is made anew only where the entry or its size has changed.
View TabStripPanel::makeTabs(const std::vector<ListedEntry>& entries) {
  View tabs{.key = "tabs", .frame = {chrome_.tabsOrigin, chrome_.tabsSize}};
  if (!content_.children.empty()) tabs.kept = std::move(content_.children.back().kept);
  if (!showsSameTabs(entries)) arrange(tabs.kept, entries);
  for (std::size_t index = 0; index < entries.size(); ++index) {
    auto& tab = tabs_[index];
    auto& [origin, view] = tabs.kept[index];
    const auto& entry = entries[index].entry;
    const auto& layout = geometry_.layouts()[index];
    origin = geometry_.itemOrigin(index);
    if (tab.entry == entry && tab.layout == layout) continue;
    tab = {entries[index].id, entry, layout, entry->tabIDs.size() > 1};
    view = std::make_shared<const View>(makeTab(entry, layout));
  }
  return tabs;
}

// Takes the tabs and their views into the order of the entries, with room for new ones.
void TabStripPanel::arrange(std::vector<KeptView>& views, const std::vector<ListedEntry>& entries) {
  Former former(std::exchange(tabs_, {}));
  auto formerViews = std::exchange(views, {});
  tabs_.reserve(entries.size());
  views.reserve(entries.size());
  for (const auto& listed : entries) {
    const auto known = former.find(listed.id);
    tabs_.push_back(known ? std::move(former[*known]) : Tab{.id = listed.id});
    views.push_back(known ? std::move(formerViews[*known]) : KeptView());
  }
}

View TabStripPanel::makeTab(const SharedEntry& entry, const StripLayout& layout) {
  auto tab = tabItemView(*entry, layout, shown_->pictureTabs);
  tab.actions.onClick = [this, entry] { activate(entry->tabIDs); };
  tab.actions.onHoverChanged = [this, entry](bool inside) { tabHoverChanged(*entry, inside); };
  tab.actions.contextMenu = [this, entry] { return tabMenu(*entry); };
  return tab;
}

void TabStripPanel::activate(std::vector<UUID> tabIDs) {
  preview_.dismiss();
  callIfSet(around_.callbacks.onActivate, tabIDs);
}

Menu TabStripPanel::zoneMenu() {
  preview_.dismiss();
  return around_.menus.zoneMenu(shown_->zone);
}

Menu TabStripPanel::tabMenu(const StripEntry& entry) {
  preview_.dismiss();
  return around_.menus.menu(entry);
}

AppKitRect TabStripPanel::targetFrame(bool expanded) const {
  return stripFrame(shown_->zone, chrome_.totalSize, shown_->screen.visibleFrame, expanded);
}

bool TabStripPanel::autoHides() const {
  return shown_->zone.snap && around_.preferences.value(preference::autoHideStrip);
}

bool TabStripPanel::shouldBeExpanded() const {
  if (!autoHides() || drag_ || isHovered_ || preview_.isUnderPointer()) return true;
  if (isExpanded_ && isPointerBehind()) return true;
  return targetFrame(true).contains(around_.pointer.pointerLocation());
}

// A slide goes on, a strip that is dragged stays under the pointer.
void TabStripPanel::place() {
  const auto target = targetFrame(isExpanded_);
  if (drag_) {
    drag_->start = target;
    return drag(drag_->movedBy);
  }
  const auto left = slidesUntil_ - around_.clock.now();
  if (left <= 0) return panel_->setFrame(target);
  if (panel_->frame() != target) panel_->animate(target, 1, left, AnimationTiming::easeOut, {});
}

void TabStripPanel::slide(bool expanded) {
  isExpanded_ = expanded;
  slidesUntil_ = around_.clock.now() + slideDuration;
  place();
}

void TabStripPanel::hoverChanged(bool inside) {
  isHovered_ = inside;
  inside ? pointerArrived() : pointerLeft();
}

void TabStripPanel::pointerArrived() {
  collapseWork_.cancel();
  pointerMoves_.clear();
  if (!isExpanded_) slide(true);
}

void TabStripPanel::pointerLeft() {
  if (!autoHides()) return;
  collapseWork_ = around_.mainQueue.after(collapseDelay, [this] {
    collapseWork_.cancel();
    collapse();
  });
}

void TabStripPanel::collapse() {
  pointerMoves_.clear();
  if (!isExpanded_ || drag_ || preview_.isUnderPointer()) return;
  isPointerBehind() ? waitForPointer() : slide(false);
}

// Between the strip and its edge of the display. Were the strip to slide out now, the pointer would
// be on it, and it would slide in again, over and over.
bool TabStripPanel::isPointerBehind() const {
  return targetFrame(false).contains(around_.pointer.pointerLocation());
}

void TabStripPanel::waitForPointer() {
  const auto moved = [this] {
    if (!collapseWork_ && !isPointerBehind()) pointerLeft();
  };
  for (auto moves : {&EventMonitors::addGlobalPointerMoved, &EventMonitors::addLocalPointerMoved})
    if (auto monitor = (around_.pointer.*moves)(moved))
      pointerMoves_.push_back(std::move(*monitor));
}

void TabStripPanel::beginDrag() {
  preview_.dismiss();
  collapseWork_.cancel();
  slidesUntil_ = 0;
  isExpanded_ = true;
  drag_ = Drag{.start = panel_->frame(), .movedBy = {}};
}

void TabStripPanel::drag(AppKitVector movedBy) {
  drag_->movedBy = movedBy;
  panel_->setFrame({drag_->start.origin + movedBy, chrome_.totalSize});
}

// The zone's new place may end this panel, so it is told once the drag is over.
void TabStripPanel::endDrag() {
  drag_ = std::nullopt;
  const auto frame = panel_->frame();
  const auto all = around_.screens.all();
  const auto* const most = screenWithMostOf(frame, all);
  const auto& screen = most ? *most : shown_->screen;
  const auto placement = StripPlacement::forDropped(frame, screen.visibleFrame, snapDistance);
  dropWork_ = around_.mainQueue.async([&callbacks = around_.callbacks, zone = shown_->zone.id,
                                       placement, display = screen.displayID] {
    callIfSet(callbacks.onMove, zone, placement.position, placement.snap, display);
  });
}

void TabStripPanel::tabHoverChanged(const StripEntry& entry, bool inside) {
  if (!inside) return preview_.scheduleHide();
  if (restsAt_ && restsAt_ == around_.pointer.pointerLocation()) return;
  preview_.scheduleShow([this, tabIDs = entry.tabIDs] { return makePreview(tabIDs); });
}

// The first one that stands for any of these tabs.
std::optional<std::size_t> TabStripPanel::tabWith(const std::vector<UUID>& tabIDs) const {
  if (tabIDs.empty()) return std::nullopt;
  const auto isListed = [&](UUID id) { return std::ranges::find(tabIDs, id) != tabIDs.end(); };
  const auto found = std::ranges::find_if(tabs_, [&](const Tab& tab) {
    return isListed(tab.id) || (tab.isGroup && std::ranges::any_of(tab.entry->tabIDs, isListed));
  });
  if (found == tabs_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - tabs_.begin());
}

std::optional<TabPreview> TabStripPanel::makePreview(const std::vector<UUID>& tabIDs) {
  const auto index = tabWith(tabIDs);
  if (!index || !around_.preferences.value(preference::previewOnHover)) return std::nullopt;
  const auto& entry = *tabs_[*index].entry;
  previewing_ = entry.tabIDs;
  const auto tab = geometry_.itemFrame(*index);
  const auto corner = panel_->frame().origin + AppKitVector{chrome_.tabsOrigin.x + tab.minX(),
                                                            chrome_.tabsOrigin.y + tab.minY()};
  return TabPreview{.entry = entry,
                    .tabFrame = {corner, tab.size},
                    .snap = shown_->zone.snap,
                    .visibleFrame = shown_->screen.visibleFrame,
                    .width = around_.preferences.previewSize(),
                    .actions = {.onClick = [this, ids = entry.tabIDs] { activate(ids); },
                                .contextMenu =
                                    [this, shared = tabs_[*index].entry] {
                                      return around_.menus.menu(*shared);
                                    }}};
}

// The preview stays as long as its entry lives.
void TabStripPanel::updatePreview() {
  if (!preview_.isVisible()) return;
  const auto preview = makePreview(previewing_);
  preview ? preview_.update(*preview) : preview_.hide();
}

}  // namespace pellow
