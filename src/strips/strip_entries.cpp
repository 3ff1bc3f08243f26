#include "strips/strip_entries.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "base/former.h"
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

}  // namespace

std::vector<StripItem> items(const std::vector<ListedEntry>& entries) {
  std::vector<StripItem> items;
  items.reserve(entries.size());
  for (const auto& listed : entries) items.push_back(listed.item);
  return items;
}

StripEntries::Rules StripEntries::Rules::of(const ZoneStore& zones,
                                            const Preferences& preferences) {
  Rules rules{.pins = zones.pins,
              .tabSizes = {},
              .defaultZone = zones.defaultZone().id,
              .groups = preferences.mechanism() == Mechanism::hideApp ||
                        preferences.tabScope() == TabScope::app,
              .showsTitles = preferences.value(preference::showTitles)};
  const auto tabSize = preferences.tabSize();
  for (const auto& zone : zones.zones())
    rules.tabSizes.emplace(zone.id, zone.tabSize.value_or(tabSize));
  return rules;
}

class StripEntries::Update {
 public:
  // `sameRules`: as the former lists were made by.
  Update(const Rules& rules, Lists former, bool sameRules) : rules_(rules), sameRules_(sameRules) {
    for (const auto& [id, tabSize] : rules.tabSizes)
      strips_.emplace(id, Strip{.zoneID = id, .tabSize = tabSize, .list = std::move(former[id])});
    defaultStrip_ = &strips_.at(rules.defaultZone);
  }

  // `revision`: of the tab.
  void add(const TabItem& tab, const TabRevision& revision) {
    auto& strip = stripOf(tab);
    if (rules_.groups) return addToGroups(strip, tab);
    auto& listed = placeFor(strip, revision.id);
    if (sameRules_ && listed.revision == revision.number) return;
    fill(listed, makeEntry(tab, strip));
    listed.revision = revision.number;
  }

  Lists take() && {
    Lists lists;
    for (auto& [id, strip] : strips_) {
      for (auto& group : strip.groups) {
        auto& listed = placeFor(strip, group.tabIDs.front());
        fill(listed, std::move(group));
      }
      strip.list.resize(strip.count);
      lists.emplace(id, std::move(strip.list));
    }
    return lists;
  }

 private:
  struct Strip {
    UUID zoneID;
    double tabSize = 0;
    std::vector<ListedEntry> list;  // as it was, from `count` on
    std::size_t count = 0;
    std::optional<Former<ListedEntry>> former;  // once the order changes
    std::vector<StripEntry> groups;
    std::unordered_map<std::string, std::size_t> groupAt;
  };

  Strip& stripOf(const TabItem& tab) {
    if (strips_.size() == 1) return *defaultStrip_;
    const auto own = tab.zoneID ? strips_.find(*tab.zoneID) : strips_.end();
    return own == strips_.end() ? *defaultStrip_ : own->second;
  }

  void addToGroups(Strip& strip, const TabItem& tab) const {
    auto entry = makeEntry(tab, strip);
    const auto [found, isNew] = strip.groupAt.try_emplace(groupKey(tab), strip.groups.size());
    if (!isNew) return addToGroup(strip.groups[found->second], entry);
    strip.groups.push_back(std::move(entry));
  }

  static void fill(ListedEntry& listed, StripEntry entry) {
    listed.revision = 0;
    listed.item = {entry.size, entry.showsTitle};
    if (!listed.entry || *listed.entry != entry)
      listed.entry = std::make_shared<const StripEntry>(std::move(entry));
  }

  // The next place of the list, with what stood for this tab before.
  static ListedEntry& placeFor(Strip& strip, const UUID& id) {
    auto& [zoneID, tabSize, list, count, former, groups, groupAt] = strip;
    const auto place = count++;
    if (!former && place < list.size() && list[place].id == id) return list[place];
    if (!former) {
      former.emplace(std::vector(std::make_move_iterator(list.begin() + place),
                                 std::make_move_iterator(list.end())));
      list.resize(place);
    }
    const auto known = former->find(id);
    list.push_back(known ? std::move((*former)[*known]) : ListedEntry{.id = id});
    return list.back();
  }

  bool isPinned(const TabItem& tab, UUID zoneID) const {
    const auto pin = tab.bundleID ? rules_.pins.find(*tab.bundleID) : rules_.pins.end();
    return pin != rules_.pins.end() && pin->second == zoneID;
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
            .showsTitle = tab.showsTitle.value_or(rules_.showsTitles),
            .hasOwnTitleSetting = tab.showsTitle.has_value(),
            .screenID = tab.screenID,
            .appName = tab.appName,
            .bundleID = tab.bundleID,
            .isPinned = isPinned(tab, strip.zoneID)};
  }

  const Rules& rules_;
  bool sameRules_;
  std::unordered_map<UUID, Strip> strips_;
  Strip* defaultStrip_;
};

const StripEntries::Lists& StripEntries::update(const TabStore& tabs, const ZoneStore& zones,
                                                const Preferences& preferences) {
  auto rules = Rules::of(zones, preferences);
  Update update(rules, std::move(lists_), rules == rules_);
  for (std::size_t place = 0; place < tabs.tabs().size(); ++place)
    update.add(tabs.tabs()[place], tabs.revisions()[place]);
  lists_ = std::move(update).take();
  rules_ = std::move(rules);
  return lists_;
}

}  // namespace pellow
