#include "ui/zones_pane.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/unicode.h"
#include "ui/form_builders.h"

namespace pellow {
namespace {

constexpr double nameWidth = 150;  // points
constexpr double rowSpacing = 8;

// The controls of one zone's row.
struct Row {
  ZoneStore& zones;
  TabStore& tabs;
  const TabZone& zone;

  FormElement element() const {
    return {key(""), FormRow{{name(), edge(), showsName(), isDefault(), remove()}, rowSpacing}};
  }

 private:
  std::string key(std::string_view control) const { return zone.id.text() + std::string(control); }

  // `write(zone, value)` changes the zone, if it is still there.
  template <class Value, class Write>
  std::function<void(Value)> changing(Write write) const {
    return [&zones = zones, id = zone.id, write](Value value) {
      zones.change(id, [&](TabZone& changed) { write(changed, value); });
    };
  }

  // Blanks are no name.
  FormElement name() const {
    return {.key = key("-name"),
            .content = TextField{.text = zone.name,
                                 .onEnded = changing<const std::string&>(
                                     [](TabZone& renamed, const std::string& typed) {
                                       if (const auto text = trimmed(typed); !text.empty())
                                         renamed.name = text;
                                     })},
            .width = nameWidth,
            .accessibleName = "Zone name"};
  }

  FormElement edge() const {
    const auto selected = zone.snap.transform(
        [](StripEdge snap) { return static_cast<std::size_t>(std::to_underlying(snap)); });
    return {
        .key = key("-edge"),
        .content =
            PopUpButton{.titles = {"Left edge", "Right edge", "Top edge", "Bottom edge"},
                        .selected = selected,
                        .onChosen = changing<std::size_t>([](TabZone& snapped, std::size_t index) {
                          snapped.snap = static_cast<StripEdge>(index);
                        })},
        .accessibleName = "Edge of " + zone.name};
  }

  FormElement showsName() const {
    return {.key = key("-showsName"),
            .content = CheckBox{.title = "Name",
                                .isOn = zone.showsName,
                                .onToggled = changing<bool>(
                                    [](TabZone& named, bool isOn) { named.showsName = isOn; })},
            .tooltip =
                "Show this zone's name down the side of its strip. A named zone stays on screen "
                "even with no tabs in it.",
            .accessibleName = "Name of " + zone.name};
  }

  FormElement isDefault() const {
    return {.key = key("-default"),
            .content = RadioButton{.title = "Default",
                                   .isOn = zones.defaultZone().id == zone.id,
                                   .onChosen =
                                       [&zones = zones, id = zone.id] {
                                         const bool isThere = zones.zone(id).id == id;
                                         if (isThere) zones.setDefaultZoneID(id);
                                       }},
            .accessibleName = "Default: " + zone.name};
  }

  FormElement remove() const {
    return {.key = key("-remove"),
            .content = PushButton{.title = "Remove",
                                  .onClick =
                                      [&zones = zones, &tabs = tabs, id = zone.id] {
                                        if (const auto heir = zones.remove(id))
                                          tabs.reassign(id, heir);
                                      }},
            .isEnabled = zones.zones().size() > 1,
            .accessibleName = "Remove " + zone.name};
  }
};

}  // namespace

FormPane zonesPane(ZoneStore& zones, TabStore& tabs) {
  FormPane pane{"Zones", {}};
  auto& elements = pane.elements;
  elements.push_back(form::section("Zones"));
  elements.push_back(form::note("zones",
                                "Each zone is a strip of tabs in its own place on screen. With "
                                "more than one, the palette asks which to send a window to."));
  for (const auto& zone : zones.zones()) elements.push_back(Row{zones, tabs, zone}.element());
  elements.push_back(
      form::note("strips",
                 "Right-click any tab for its own size and colour. Drag the handle at the top of a "
                 "strip to move it. Release near a side to snap it there, or anywhere else to "
                 "leave it floating."));
  elements.push_back(
      form::button("addZone", "Add Zone", [&zones] { (void)zones.add("New zone"); }));
  return pane;
}

}  // namespace pellow
