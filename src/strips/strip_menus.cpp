#include "strips/strip_menus.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace pellow {
namespace {

constexpr std::array sizesOffered{24, 32, 40, 48, 56, 64, 72};  // points

struct Preset {
  std::string_view name;
  SystemColour colour;
};
constexpr std::array presets{
    Preset{"Red", SystemColour::red},       Preset{"Orange", SystemColour::orange},
    Preset{"Yellow", SystemColour::yellow}, Preset{"Green", SystemColour::green},
    Preset{"Blue", SystemColour::blue},     Preset{"Purple", SystemColour::purple},
    Preset{"Pink", SystemColour::pink},     Preset{"Grey", SystemColour::grey}};

MenuItem separator() { return {.isSeparator = true}; }

MenuItem submenu(std::string title, Menu menu) {
  return {.title = std::move(title), .submenu = std::move(menu)};
}

// "Default", and the sizes offered; `makeItem(title, isChecked, size)`.
template <class MakeItem>
Menu sizeMenu(std::optional<double> chosen, MakeItem makeItem) {
  Menu menu;
  menu.items.push_back(makeItem("Default", !chosen, std::nullopt));
  menu.items.push_back(separator());
  for (const double size : sizesOffered)
    menu.items.push_back(makeItem(fmt::format("{} pt", size), chosen == size, std::optional(size)));
  return menu;
}

std::string nameOf(const StripEntry& entry) {
  return entry.appName.value_or(entry.bundleID.value_or(""));
}

}  // namespace

Menu StripMenus::menu(const StripEntry& entry) const {
  const auto& zone = entry.zoneID;
  const auto item = [&](std::string title, auto act, bool isChecked = false,
                        std::string tooltip = {}) {
    return MenuItem{.title = std::move(title),
                    .isChecked = isChecked,
                    .tooltip = std::move(tooltip),
                    .onChosen = std::move(act)};
  };
  const auto& callbacks = around_.callbacks;
  auto& zones = around_.zones;
  return {{
      item("Restore", [&callbacks, ids = entry.tabIDs] { callIfSet(callbacks.onActivate, ids); }),
      separator(),
      submenu("Size", sizes(entry)),
      pin(entry),
      item("Pellow All " + nameOf(entry) + " Windows Here",
           [&callbacks, tab = entry.tabIDs.front(), zone] {
             callIfSet(callbacks.onPellowRest, tab, zone);
           }),
      separator(),
      item(
          "Show Window Title",
          [&callbacks, ids = entry.tabIDs, shows = !entry.showsTitle] {
            callIfSet(callbacks.onSetShowsTitle, ids, shows);
          },
          entry.showsTitle),
      separator(),
      item(
          "Make This Zone the Default", [&zones, zone] { zones.setDefaultZoneID(zone); },
          zones.defaultZone().id == zone, "Where windows go when nothing else decides."),
      separator(),
      submenu("Move to", destinations(entry)),
  }};
}

Menu StripMenus::sizes(const StripEntry& entry) const {
  const auto own = entry.hasOwnSize ? std::optional(entry.size) : std::nullopt;
  return sizeMenu(own, [&](std::string title, bool isChecked, std::optional<double> size) {
    return MenuItem{.title = std::move(title),
                    .isChecked = isChecked,
                    .onChosen = [&callbacks = around_.callbacks, ids = entry.tabIDs, size] {
                      callIfSet(callbacks.onSetSize, ids, size);
                    }};
  });
}

Menu StripMenus::destinations(const StripEntry& entry) const {
  Menu menu;
  for (const auto& zone : around_.zones.zones())
    menu.items.push_back({.title = zone.name,
                          .isChecked = zone.id == entry.zoneID,
                          .onChosen = [&callbacks = around_.callbacks, ids = entry.tabIDs,
                                       id = zone.id] { callIfSet(callbacks.onSetZone, ids, id); }});
  return menu;
}

// An application without a bundle identifier cannot be known again.
MenuItem StripMenus::pin(const StripEntry& entry) const {
  MenuItem item{.title = "Always Pellow " + nameOf(entry) + " Here",
                .isEnabled = entry.bundleID.has_value(),
                .isChecked = entry.isPinned,
                .tooltip =
                    "New windows from this app go to this zone. One zone per app, so pinning "
                    "it somewhere else moves the pin."};
  if (entry.bundleID)
    item.onChosen = [this, bundleID = *entry.bundleID, zone = entry.zoneID] {
      togglePin(bundleID, zone);
    };
  return item;
}

// Neither the pins nor tabs that are there already post anything.
void StripMenus::togglePin(const std::string& bundleID, UUID zoneID) const {
  auto& pins = around_.zones.pins;
  const auto pinned = pins.find(bundleID);
  const bool wasPinnedHere = pinned != pins.end() && pinned->second == zoneID;
  if (wasPinnedHere) {
    pins.erase(pinned);
  } else {
    pins[bundleID] = zoneID;
  }
  around_.zones.savePins();
  if (!wasPinnedHere) callIfSet(around_.callbacks.onGatherPinned, bundleID, zoneID);
  around_.refresh();
}

Menu StripMenus::zoneMenu(const TabZone& zone) const {
  Menu menu{{
      {.title = zone.name, .isEnabled = false},
      separator(),
      submenu("Colour", colours(zone)),
      submenu("Icon Size", iconSizes(zone)),
      zoneItem("Show Zone Name", zone.showsName, zone.id,
               [](TabZone& changed) { changed.showsName = !changed.showsName; }),
  }};
  if (const auto& more = around_.callbacks.moreZoneItems) {
    auto items = more();
    if (!items.empty()) menu.items.push_back(separator());
    std::ranges::move(items, std::back_inserter(menu.items));
  }
  return menu;
}

template <class Change>
MenuItem StripMenus::zoneItem(std::string title, bool isChecked, UUID zoneID, Change change) const {
  return {.title = std::move(title),
          .isChecked = isChecked,
          .onChosen = [&zones = around_.zones, zoneID, change] { zones.change(zoneID, change); }};
}

Menu StripMenus::colours(const TabZone& zone) const {
  const auto now = Colour::parse(zone.colorHex.value_or(""));
  const auto item = [&](std::string title, std::optional<std::string> hex) {
    return zoneItem(std::move(title), now == Colour::parse(hex.value_or("")), zone.id,
                    [hex](TabZone& changed) { changed.colorHex = hex; });
  };
  Menu menu;
  menu.items.push_back(item("None", std::nullopt));
  menu.items.push_back(separator());
  for (const auto& [name, colour] : presets) {
    menu.items.push_back(item(std::string(name), around_.systemColours.resolve(colour).text()));
    menu.items.back().image = MenuSwatch{colour};
  }
  menu.items.push_back(separator());
  menu.items.push_back({.title = "Custom…", .onChosen = [&colours = around_.colours, id = zone.id] {
                          colours.edit(id);
                        }});
  return menu;
}

Menu StripMenus::iconSizes(const TabZone& zone) const {
  return sizeMenu(zone.tabSize, [&](std::string title, bool isChecked, std::optional<double> size) {
    return zoneItem(std::move(title), isChecked, zone.id,
                    [size](TabZone& changed) { changed.tabSize = size; });
  });
}

}  // namespace pellow
