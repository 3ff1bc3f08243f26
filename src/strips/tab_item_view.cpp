#include "strips/tab_item_view.h"

#include <string>
#include <utility>

namespace pellow {
namespace {

constexpr double titleGap = 6;
constexpr Colour white(1, 1, 1);

View iconView(const StripEntry& entry, const StripLayout& layout) {
  const auto side = layout.iconSide;
  const auto y = (layout.itemSize.height - side) / 2;
  // Beside a title the icon keeps the same margin on the left as at top and bottom.
  const auto x = entry.showsTitle ? y : (layout.itemSize.width - side) / 2;
  View view{.key = "icon", .frame = {x, y, side, side}};
  if (entry.icon) view.look.content = Picture{*entry.icon};
  return view;
}

// Beside a title, the picture has the room of a tab without one.
View pictureView(const StripEntry& entry, const StripLayout& layout) {
  constexpr double margin = 4;
  constexpr double aspect = 2 / 1.35;  // of such a tab
  const auto [tabWidth, height] = layout.itemSize;
  const auto width = entry.showsTitle ? height * aspect : tabWidth;
  return {.key = "picture",
          .frame = {margin, margin, width - 2 * margin, height - 2 * margin},
          .look = {.content = Picture{*entry.image}, .cornerRadius = 4}};
}

// Over the top right corner of the picture.
View cornerIconView(const StripEntry& entry, const ViewRect& picture) {
  constexpr double side = 14;
  View view{.key = "icon", .frame = {picture.maxX() - 11, picture.maxY() - 11, side, side}};
  if (entry.icon) view.look.content = Picture{*entry.icon};
  return view;
}

View titleView(const StripEntry& entry, const StripLayout& layout, double from) {
  return {.key = "title",
          .frame = {from, 0, layout.itemSize.width - from - titleGap, layout.itemSize.height},
          .look = {.content = Label{.text = entry.title, .pointSize = 11}}};
}

View pinView(const StripLayout& layout) {
  constexpr double side = 13;
  return {.key = "pin",
          .frame = {0, layout.itemSize.height - side, side, side},
          .look = {.content = Symbol{"pin.fill", white},
                   .rotation = -35,
                   .shadow = Shadow{.opacity = 0.55, .blurRadius = 2, .dy = -0.5},
                   .accessibleName = "Pinned"}};
}

View countView(const StripEntry& entry, const StripLayout& layout) {
  constexpr double height = 14;
  constexpr double margin = 2;
  constexpr double digitWidth = 6;
  const auto text = std::to_string(entry.count);
  const auto width = height + digitWidth * static_cast<double>(text.size() - 1);
  View badge{.key = "count",
             .frame = {layout.itemSize.width - margin - width,
                       layout.itemSize.height - margin - height, width, height},
             .look = {.content = Fill{SystemColour::accent}, .cornerRadius = height / 2}};
  badge.children.push_back(
      {.key = "number",
       .frame = {0, 0, width, height},
       .look = {
           .content = Label{
               .text = text, .pointSize = 9, .paint = white, .alignment = TextAlignment::centre}}});
  return badge;
}

}  // namespace

View tabItemView(const StripEntry& entry, const StripLayout& layout, bool pictureTabs) {
  View tab{.key = entry.tabIDs.front().text(),
           .frame = {{}, layout.itemSize},
           .look = {.cornerRadius = 7,
                    .highlightsOnHover = true,
                    .tooltip = entry.tooltip,
                    .accessibleName = entry.title}};
  const bool showsPicture = pictureTabs && entry.image;
  // There may be a thousand tabs, and views are not small.
  tab.children.reserve(1U + showsPicture + entry.showsTitle + entry.isPinned + (entry.count > 1));
  if (showsPicture) {
    tab.children.push_back(pictureView(entry, layout));
    tab.children.push_back(cornerIconView(entry, tab.children.back().frame));
  } else {
    tab.children.push_back(iconView(entry, layout));
  }
  const auto end = tab.children.back().frame.maxX();
  if (entry.showsTitle) tab.children.push_back(titleView(entry, layout, end + titleGap));
  if (entry.isPinned) tab.children.push_back(pinView(layout));
  if (entry.count > 1) tab.children.push_back(countView(entry, layout));
  return tab;
}

}  // namespace pellow
