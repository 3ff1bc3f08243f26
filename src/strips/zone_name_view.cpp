#include "strips/zone_name_view.h"

#include <utility>

namespace pellow {

View zoneNameView(std::string text, const ViewRect& band, bool rotated) {
  constexpr double margin = 4;
  const auto length = (rotated ? band.height() : band.width()) - 2 * margin;
  const auto thickness = rotated ? band.width() : band.height();
  return {.key = "name",
          .frame = {band.midX() - length / 2, band.midY() - thickness / 2, length, thickness},
          .look = {.content = Label{.text = std::move(text),
                                    .pointSize = 10,
                                    .paint = SystemColour::secondaryLabel,
                                    .alignment = TextAlignment::centre,
                                    .weight = FontWeight::medium},
                   .rotation = rotated ? 90.0 : 0.0}};
}

}  // namespace pellow
