#include "strips/zone_colour_editor.h"

namespace pellow {
namespace {

constexpr Colour startingColour(0.5, 0.5, 0.5);

}  // namespace

void ZoneColourEditor::edit(UUID zoneID) {
  const auto before = Colour::parse(zones_.zone(zoneID).colorHex.value_or(""));
  edits_ = panel_.show(before.value_or(startingColour), [this, zoneID](Colour colour) {
    zones_.change(zoneID, [&](TabZone& zone) { zone.colorHex = colour.text(); });
  });
}

}  // namespace pellow
