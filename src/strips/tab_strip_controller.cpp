#include "strips/tab_strip_controller.h"

#include <algorithm>
#include <cstddef>
#include <unordered_set>
#include <utility>

namespace pellow {
namespace {

// Between two refreshes of the strips: a frame of the display or, with many tabs, a time in
// proportion to the cost of drawing them.
constexpr Seconds frameTime = 1.0 / 60;
constexpr Seconds timeForTab = 0.0005;

}  // namespace

TabStripController::TabStripController(const Surroundings& surroundings)
    : around_(surroundings),
      colours_(around_.colourPanel, around_.zones),
      menus_({.zones = around_.zones,
              .callbacks = *this,
              .colours = colours_,
              .systemColours = around_.systemColours,
              .refresh = [this] { refresh(); }}) {}

void TabStripController::start() {
  const auto observe = [this](const char* name, void (TabStripController::*react)()) {
    subscriptions_.push_back(
        around_.notifications.observe(name, [this, react] { (this->*react)(); }));
  };
  observe(TabStore::didChange, &TabStripController::tabsDidChange);
  observe(ZoneStore::didChange, &TabStripController::rebuildAndRefresh);
  observe(Preferences::didChange, &TabStripController::rebuildAndRefresh);
  subscriptions_.push_back(around_.screens.onDidChangeParameters([this] { rebuildAndRefresh(); }));
  rebuildAndRefresh();
}

void TabStripController::tabsDidChange() {
  if (refreshSoon_) return;
  const auto wait = nextFrame_ - around_.clock.now();
  if (wait <= 0) return refresh();
  refreshSoon_ = around_.mainQueue.after(wait, [this] { refresh(); });
}

void TabStripController::rebuildAndRefresh() {
  rebuildPanels();
  refresh();
}

// A panel lives as long as its zone is shown on its display.
void TabStripController::rebuildPanels() {
  auto before = std::exchange(panels_, {});
  for (const auto& zone : around_.zones.zones()) {
    for (const auto& screen : screens(zone)) {
      if (!screen.displayID) continue;
      const PanelKey key{*screen.displayID, zone.id};
      const auto known = before.find(key);
      panels_[key] = known == before.end() ? makePanel() : std::move(known->second);
    }
  }
}

std::unique_ptr<TabStripPanel> TabStripController::makePanel() {
  return std::make_unique<TabStripPanel>(
      TabStripPanel::Surroundings{.panels = around_.panels,
                                  .preferences = around_.preferences,
                                  .screens = around_.screens,
                                  .clock = around_.clock,
                                  .mainQueue = around_.mainQueue,
                                  .pointer = around_.pointer,
                                  .callbacks = *this,
                                  .menus = menus_});
}

void TabStripController::refresh() {
  refreshSoon_.cancel();
  const auto& all = entries_.update(around_.tabs, around_.zones, around_.preferences);
  const auto tabs = static_cast<double>(around_.tabs.tabs().size());
  nextFrame_ = around_.clock.now() + std::max(frameTime, timeForTab * tabs);
  for (const auto& zone : around_.zones.zones())
    for (const auto& screen : screensWithPanel(zone))
      panels_.at({*screen.displayID, zone.id})->render(all.at(zone.id), screen, zone);
}

// Not where the panels would be if made now: the main display changes as soon as the user turns to
// a window on another one.
std::vector<Screen> TabStripController::screensWithPanel(const TabZone& zone) const {
  auto all = around_.screens.all();
  std::erase_if(all, [&](const Screen& screen) {
    return !screen.displayID || !panels_.contains({*screen.displayID, zone.id});
  });
  return all;
}

std::vector<StripEntry> TabStripController::entries(UUID zoneID) const {
  const auto all = makeEntries();
  const auto found = all.find(zoneID);
  std::vector<StripEntry> entries;
  if (found != all.end())
    for (const auto& listed : found->second) entries.push_back(*listed.entry);
  return entries;
}

StripEntries::Lists TabStripController::makeEntries() const {
  return StripEntries().update(around_.tabs, around_.zones, around_.preferences);
}

std::vector<Screen> TabStripController::screens(const TabZone& zone) const {
  auto all = around_.screens.all();
  if (around_.preferences.value(preference::tabsOnAllScreens)) return all;
  if (zone.displayID) {
    const auto own = std::ranges::find(all, zone.displayID, &Screen::displayID);
    if (own != all.end()) return {*own};
  }
  const auto main = around_.screens.main();
  return main ? std::vector{*main} : std::vector<Screen>{};
}

StripGeometry TabStripController::geometry(const std::vector<StripItem>& items, const TabZone& zone,
                                           const Screen& screen) const {
  return StripGeometry::make(
      items, StripRun::make(zone.snap, screen.visibleFrame, around_.preferences.pictureTabs()));
}

std::optional<AppKitRect> TabStripController::projectedTabFrame(UUID zoneID) const {
  const auto zone = around_.zones.zone(zoneID);
  const auto shownOn = screensWithPanel(zone);
  if (shownOn.empty()) return std::nullopt;
  auto all = items(makeEntries().at(zone.id));
  all.push_back({zone.tabSize.value_or(around_.preferences.tabSize()),
                 around_.preferences.value(preference::showTitles)});
  return geometry(all, zone, shownOn.front())
      .itemFrameOnScreen(all.size() - 1, zone, shownOn.front().visibleFrame);
}

std::optional<AppKitRect> TabStripController::frame(UUID tabID) const {
  const auto found = frames({&tabID, 1});
  return found.empty() ? std::nullopt : std::optional(found.begin()->second);
}

std::map<UUID, AppKitRect> TabStripController::frames(std::span<const UUID> tabIDs) const {
  const std::unordered_set<UUID> wanted(tabIDs.begin(), tabIDs.end());
  const auto all = makeEntries();
  std::map<UUID, AppKitRect> frames;
  for (const auto& zone : around_.zones.zones()) {
    const auto shownOn = screensWithPanel(zone);
    if (shownOn.empty()) continue;
    const auto& shown = all.at(zone.id);
    const auto places = geometry(items(shown), zone, shownOn.front());
    for (std::size_t index = 0; index < shown.size(); ++index)
      for (const auto id : shown[index].entry->tabIDs)
        if (wanted.contains(id))
          frames[id] = places.itemFrameOnScreen(index, zone, shownOn.front().visibleFrame);
  }
  return frames;
}

}  // namespace pellow
