#include "strips/tab_strip_controller.h"

#include <algorithm>
#include <string>
#include <utility>

#include "model/mechanism.h"
#include "model/tab_scope.h"

namespace pellow {
namespace {

// Between two pictures of the strips: a frame of the display or, with many tabs, a time in
// proportion to what drawing them costs.
constexpr Seconds frameTime = 1.0 / 60;
constexpr Seconds timeForTab = 0.0005;

// What the tabs of one entry have in common.
std::string groupKey(const TabItem& tab, UUID zoneID) {
  const auto application = tab.bundleID.value_or(std::to_string(tab.window.pid));
  return zoneID.text() + "|" + application;
}

void addToGroup(StripEntry& entry, const StripEntry& other) {
  entry.tooltip += "\n" + other.tooltip;
  entry.count += other.count;
  entry.tabIDs.insert(entry.tabIDs.end(), other.tabIDs.begin(), other.tabIDs.end());
  entry.showsTitle = entry.showsTitle || other.showsTitle;
  if (!other.hasOwnSize) return;
  entry.size = entry.hasOwnSize ? std::max(entry.size, other.size) : other.size;
  entry.hasOwnSize = true;
}

std::vector<StripEntry> inZone(std::vector<StripEntry> entries, UUID zoneID) {
  std::erase_if(entries, [&](const StripEntry& entry) { return entry.zoneID != zoneID; });
  return entries;
}

}  // namespace

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

// A panel lives for as long as its zone is shown on its display.
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
  auto panel = std::make_unique<TabStripPanel>(around_.panels, around_.preferences);
  panel->onActivate = [this](const std::vector<UUID>& ids) {
    if (onActivate) onActivate(ids);
  };
  return panel;
}

void TabStripController::refresh() {
  refreshSoon_.cancel();
  const auto all = makeEntries();
  const auto pause = std::max(frameTime, timeForTab * static_cast<double>(all.size()));
  nextFrame_ = around_.clock.now() + pause;
  for (const auto& zone : around_.zones.zones()) {
    const auto entries = inZone(all, zone.id);
    for (const auto& screen : screensWithPanel(zone))
      panels_.at({*screen.displayID, zone.id})->render(entries, screen, zone);
  }
}

// Not where the panels would be if they were made now: the main display is another one as soon as
// the user looks at a window there.
std::vector<Screen> TabStripController::screensWithPanel(const TabZone& zone) const {
  auto all = around_.screens.all();
  std::erase_if(all, [&](const Screen& screen) {
    return !screen.displayID || !panels_.contains({*screen.displayID, zone.id});
  });
  return all;
}

std::vector<StripEntry> TabStripController::entries(UUID zoneID) const {
  return inZone(makeEntries(), zoneID);
}

std::vector<StripEntry> TabStripController::makeEntries() const {
  const bool groups = around_.preferences.mechanism() == Mechanism::hideApp ||
                      around_.preferences.tabScope() == TabScope::app;
  std::vector<StripEntry> entries;
  std::map<std::string, std::size_t> groupAt;
  for (const auto& tab : around_.tabs.tabs()) {
    const auto zone = around_.zones.zone(tab.zoneID);
    auto entry = makeEntry(tab, zone);
    if (groups) {
      const auto [found, isNew] = groupAt.try_emplace(groupKey(tab, zone.id), entries.size());
      if (!isNew) {
        addToGroup(entries[found->second], entry);
        continue;
      }
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

StripEntry TabStripController::makeEntry(const TabItem& tab, const TabZone& zone) const {
  const auto pinned = tab.bundleID ? around_.zones.pinnedZone(*tab.bundleID) : std::nullopt;
  const auto& title = tab.title.empty() ? tab.appName : tab.title;
  return {.title = title,
          .tooltip = title,
          .icon = tab.icon,
          .tabIDs = {tab.id},
          .zoneID = zone.id,
          .size = tab.size.value_or(zone.tabSize.value_or(around_.preferences.tabSize())),
          .hasOwnSize = tab.size.has_value(),
          .showsTitle = tab.showsTitle.value_or(around_.preferences.value(preference::showTitles)),
          .screenID = tab.screenID,
          .appName = tab.appName,
          .isPinned = pinned && pinned->id == zone.id};
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
  auto all = items(entries(zone.id));
  all.push_back({zone.tabSize.value_or(around_.preferences.tabSize()),
                 around_.preferences.value(preference::showTitles)});
  return geometry(all, zone, shownOn.front())
      .itemFrameOnScreen(all.size() - 1, zone, shownOn.front().visibleFrame);
}

std::optional<AppKitRect> TabStripController::frame(UUID tabID) const {
  for (const auto& zone : around_.zones.zones()) {
    const auto shown = entries(zone.id);
    const auto holder = std::ranges::find_if(shown, [&](const StripEntry& entry) {
      return std::ranges::find(entry.tabIDs, tabID) != entry.tabIDs.end();
    });
    if (holder == shown.end()) continue;
    const auto shownOn = screensWithPanel(zone);
    if (shownOn.empty()) return std::nullopt;
    return geometry(items(shown), zone, shownOn.front())
        .itemFrameOnScreen(static_cast<std::size_t>(holder - shown.begin()), zone,
                           shownOn.front().visibleFrame);
  }
  return std::nullopt;
}

}  // namespace pellow
