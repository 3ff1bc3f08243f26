#include "palette/palette_view.h"

#include <functional>
#include <numeric>
#include <string>
#include <utility>

namespace pellow {
namespace {

constexpr double itemHeight = 26;
constexpr double separatorHeight = 9;
constexpr double width = 268;
constexpr double padding = 5;
constexpr double iconColumn = 18;
constexpr double gap = 4;

double heightOf(const PaletteRow& row) {
  return std::holds_alternative<PaletteAction>(row) ? itemHeight : separatorHeight;
}

View actionView(const PaletteAction& action, std::string key, double y) {
  constexpr double side = 14;  // of the symbol
  constexpr double inset = 6;
  constexpr double titleX = inset + iconColumn + gap;
  constexpr double rowWidth = width - 2 * padding;
  View row{.key = std::move(key),
           .frame = {padding, y, rowWidth, itemHeight},
           .look = {.cornerRadius = 5, .highlightsOnHover = true, .accessibleName = action.title},
           .actions = {.onClick = action.handler}};
  row.children.push_back(
      {.key = "symbol",
       .frame = {inset + (iconColumn - side) / 2, (itemHeight - side) / 2, side, side},
       .look = {.content = Symbol{action.symbol, SystemColour::secondaryLabel}}});
  row.children.push_back({.key = "title",
                          .frame = {titleX, 0, rowWidth - titleX - inset, itemHeight},
                          .look = {.content = Label{.text = action.title, .pointSize = 12}}});
  return row;
}

View separatorView(std::string key, double y) {
  constexpr double inset = 11;
  return {.key = std::move(key),
          .frame = {inset, y + separatorHeight / 2 - 0.5, width - 2 * inset, 1},
          .look = {.content = Fill{SystemColour::separator}}};
}

}  // namespace

View paletteView(const std::vector<PaletteRow>& rows) {
  const auto height =
      std::transform_reduce(rows.begin(), rows.end(), 2 * padding, std::plus(), heightOf);
  View palette{.key = "palette",
               .frame = {0, 0, width, height},
               .look = {.content = Backdrop{}, .cornerRadius = 8, .accessibleName = "Pellow"}};
  auto top = height - padding;
  for (const auto& row : rows) {
    top -= heightOf(row);
    const auto* const action = std::get_if<PaletteAction>(&row);
    auto key = std::to_string(palette.children.size());
    palette.children.push_back(action ? actionView(*action, std::move(key), top)
                                      : separatorView(std::move(key), top));
  }
  return palette;
}

}  // namespace pellow
