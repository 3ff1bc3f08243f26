#include "strips/tab_strip_panel.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <utility>

#include "strips/tab_item_view.h"
#include "strips/zone_name_view.h"

namespace pellow {
namespace {

constexpr double cornerRadius = 10;
constexpr double colourOpacity = 0.45;

View background(std::string key, Size size, ViewContent content) {
  return {.key = std::move(key),
          .frame = {{}, size},
          .look = {.content = std::move(content), .cornerRadius = cornerRadius}};
}

}  // namespace

TabStripPanel::TabStripPanel(Panels& panels, const Preferences& preferences)
    : preferences_(preferences), panel_(panels.makePanel("pellow-strip", WindowShadow::yes)) {}

bool TabStripPanel::Shown::operator==(const Shown& other) const {
  const auto rest = [](const Shown& shown) {
    return std::tie(shown.screen, shown.zone, shown.pictureTabs, shown.floatsAboveWindows);
  };
  return rest(*this) == rest(other) && *entries == *other.entries;
}

void TabStripPanel::render(const SharedEntries& entries, const Screen& screen,
                           const TabZone& zone) {
  Shown next{entries, screen, zone, preferences_.pictureTabs(),
             preferences_.value(preference::floatAboveWindows)};
  if (!std::exchange(isStale_, false) && shown_ == next) return;
  shown_ = std::move(next);

  const auto run = StripRun::make(zone.snap, screen.visibleFrame, shown_->pictureTabs);
  const auto geometry = StripGeometry::make(items(*entries), run);
  const auto chrome = StripChrome::make(geometry, zone);
  panel_->setLevel(shown_->floatsAboveWindows ? PanelLevel::statusWindow
                                              : PanelLevel::desktopIcons);
  panel_->setFrame(stripFrame(zone, chrome.totalSize, screen.visibleFrame, true));
  panel_->setContent(makeContent(geometry, chrome));
  panel_->orderFront();
}

View TabStripPanel::makeContent(const StripGeometry& geometry, const StripChrome& chrome) const {
  const auto& zone = shown_->zone;
  View content{.key = "strip", .frame = {{}, chrome.totalSize}};
  content.children.push_back(background("backdrop", chrome.totalSize, Backdrop{}));
  if (const auto colour = Colour::parse(zone.colorHex.value_or("")))
    content.children.push_back(
        background("colour", chrome.totalSize, Fill{colour->withAlpha(colourOpacity)}));
  if (zone.showsName)
    content.children.push_back(
        zoneNameView(zone.name, chrome.nameBand, /*rotated=*/!chrome.nameBandAcross));
  content.children.push_back(makeTabs(geometry, chrome));
  return content;
}

View TabStripPanel::makeTabs(const StripGeometry& geometry, const StripChrome& chrome) const {
  const auto& entries = *shown_->entries;
  View tabs{.key = "tabs", .frame = {chrome.tabsOrigin, chrome.tabsSize}};
  tabs.children.reserve(entries.size());
  for (std::size_t index = 0; index < entries.size(); ++index) {
    auto tab = tabItemView(entries[index], geometry.layouts()[index], geometry.itemOrigin(index),
                           shown_->pictureTabs);
    tab.actions.onClick = [this, id = entries[index].tabIDs.front()] { activate(id); };
    tabs.children.push_back(std::move(tab));
  }
  return tabs;
}

// `onActivate` may change the entries.
void TabStripPanel::activate(UUID firstTab) const {
  const auto entries = shown_->entries;
  const auto entry = std::ranges::find(*entries, firstTab,
                                       [](const StripEntry& each) { return each.tabIDs.front(); });
  if (entry != entries->end() && onActivate) onActivate(entry->tabIDs);
}

}  // namespace pellow
