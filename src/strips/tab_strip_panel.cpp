#include "strips/tab_strip_panel.h"

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
    : preferences_(preferences), panel_(panels.makePanel("pellow-strip")) {}

void TabStripPanel::render(const std::vector<StripEntry>& entries, const Screen& screen,
                           const TabZone& zone) {
  const auto geometry = StripGeometry::make(
      items(entries), StripRun::make(zone.snap, screen.visibleFrame, preferences_.pictureTabs()));
  const auto chrome = StripChrome::make(geometry, zone);

  panel_->setLevel(preferences_.value(preference::floatAboveWindows) ? PanelLevel::statusWindow
                                                                     : PanelLevel::desktopIcons);
  panel_->setFrame(stripFrame(zone, chrome.totalSize, screen.visibleFrame, true));
  panel_->setContent(makeContent(entries, geometry, chrome, zone));
  panel_->orderFront();
}

View TabStripPanel::makeContent(const std::vector<StripEntry>& entries,
                                const StripGeometry& geometry, const StripChrome& chrome,
                                const TabZone& zone) const {
  View content{.key = "strip", .frame = {{}, chrome.totalSize}};
  content.children.push_back(background("backdrop", chrome.totalSize, Backdrop{}));
  if (const auto colour = Colour::parse(zone.colorHex.value_or("")))
    content.children.push_back(
        background("colour", chrome.totalSize, Fill{colour->withAlpha(colourOpacity)}));
  if (zone.showsName)
    content.children.push_back(
        zoneNameView(zone.name, chrome.nameBand, /*rotated=*/!chrome.nameBandAcross));
  content.children.push_back(makeTabs(entries, geometry, chrome));
  return content;
}

View TabStripPanel::makeTabs(const std::vector<StripEntry>& entries, const StripGeometry& geometry,
                             const StripChrome& chrome) const {
  View tabs{.key = "tabs", .frame = {chrome.tabsOrigin, chrome.tabsSize}};
  for (std::size_t index = 0; index < entries.size(); ++index) {
    auto tab = tabItemView(entries[index], geometry.layouts()[index], geometry.itemOrigin(index));
    tab.actions.onClick = [this, ids = entries[index].tabIDs] {
      if (onActivate) onActivate(ids);
    };
    tabs.children.push_back(std::move(tab));
  }
  return tabs;
}

}  // namespace pellow
