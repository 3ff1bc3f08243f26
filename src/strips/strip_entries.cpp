#include "strips/strip_entries.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "model/mechanism.h"
#include "model/tab_scope.h"

namespace pellow {
namespace {

// What the tabs of one entry have in common, in their zone.
std::string groupKey(const TabItem& tab) {
  return tab.bundleID.value_or(std::to_string(tab.window.pid));
}

// A setting that one of its tabs has counts for the entry, even if the others have none.
void addToGroup(StripEntry& entry, const StripEntry& other) {
  entry.tooltip += "\n" + other.tooltip;
  entry.count += other.count;
  if (!entry.image) entry.image = other.image;
  if (!entry.previewImage) entry.previewImage = other.previewImage;
  entry.tabIDs.insert(entry.tabIDs.end(), other.tabIDs.begin(), other.tabIDs.end());
  if (other.hasOwnTitleSetting) {
    entry.showsTitle = other.showsTitle || (entry.hasOwnTitleSetting && entry.showsTitle);
    entry.hasOwnTitleSetting = true;
  }
  if (other.hasOwnSize) {
    entry.size = entry.hasOwnSize ? std::max(entry.size, other.size) : other.size;
    entry.hasOwnSize = true;
  }
}

// There may be a thousand tabs: what they all share is looked up once.
class EntryMaker {
 public:
  EntryMaker(const ZoneStore& zones, const Preferences& preferences)
      : pins_(zones.pins),
        groups_(preferences.mechanism() == Mechanism::hideApp ||
                preferences.tabScope() == TabScope::app),
        showsTitles_(preferences.value(preference::showTitles)),
        defaultZone_(zones.defaultZone().id) {
    const auto tabSize = preferences.tabSize();
    for (const auto& zone : zones.zones())
      strips_.emplace(zone.id, Strip{zone.id, zone.tabSize.value_or(tabSize), {}, {}});
  }

  void add(const TabItem& tab) {
    auto& strip = stripOf(tab);
    auto entry = makeEntry(tab, strip);
    if (groups_) {
      const auto [found, isNew] = strip.groupAt.try_emplace(groupKey(tab), strip.entries.size());
      if (!isNew) return addToGroup(strip.entries[found->second], entry);
    }
    strip.entries.push_back(std::move(entry));
  }

  StripEntries take() && {
    StripEntries all;
    for (auto& [id, strip] : strips_)
      all.emplace(id, std::make_shared<const std::vector<StripEntry>>(std::move(strip.entries)));
    return all;
  }

 private:
  struct Strip {
    UUID zoneID;
    double tabSize = 0;
    std::vector<StripEntry> entries;
    std::unordered_map<std::string, std::size_t> groupAt;
  };

  Strip& stripOf(const TabItem& tab) {
    const auto own = tab.zoneID ? strips_.find(*tab.zoneID) : strips_.end();
    return own == strips_.end() ? strips_.at(defaultZone_) : own->second;
  }

  bool isPinned(const TabItem& tab, UUID zoneID) const {
    const auto pin = tab.bundleID ? pins_.find(*tab.bundleID) : pins_.end();
    return pin != pins_.end() && pin->second == zoneID;
  }

  StripEntry makeEntry(const TabItem& tab, const Strip& strip) const {
    const auto& title = tab.title.empty() ? tab.appName : tab.title;
    return {.title = title,
            .tooltip = title,
            .icon = tab.icon,
            .image = tab.snapshot,
            .previewImage = tab.snapshot,
            .tabIDs = {tab.id},
            .zoneID = strip.zoneID,
            .size = tab.size.value_or(strip.tabSize),
            .hasOwnSize = tab.size.has_value(),
            .showsTitle = tab.showsTitle.value_or(showsTitles_),
            .hasOwnTitleSetting = tab.showsTitle.has_value(),
            .screenID = tab.screenID,
            .appName = tab.appName,
            .bundleID = tab.bundleID,
            .isPinned = isPinned(tab, strip.zoneID)};
  }

  const ZoneStore::Pins& pins_;
  bool groups_;
  bool showsTitles_;
  UUID defaultZone_;
  std::unordered_map<UUID, Strip> strips_;
};

}  // namespace

StripEntries makeStripEntries(const std::vector<TabItem>& tabs, const ZoneStore& zones,
                              const Preferences& preferences) {
  EntryMaker maker(zones, preferences);
  for (const auto& tab : tabs) maker.add(tab);
  return std::move(maker).take();
}

}  // namespace pellow
