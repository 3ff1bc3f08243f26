#include "strips/tab_item_view.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platforms/simulated/named_image.h"

namespace pellow {
namespace {

Image image(const char* name) {
  return Image(std::make_shared<simulated::NamedImage>(name, Size{64, 64}));
}

// A tab of the size 40, for two windows of a pinned application.
StripEntry pinnedPair() {
  return {.title = "Shopping",
          .tooltip = "Shopping\nGarden",
          .icon = image("icon"),
          .image = image("window"),
          .count = 2,
          .tabIDs = {UUID()},
          .size = 40,
          .isPinned = true};
}

std::vector<std::string> keys(const View& view) {
  std::vector<std::string> keys;
  for (const auto& child : view.children) keys.push_back(child.key);
  return keys;
}

View tabOf(const StripEntry& entry, bool pictureTabs) {
  const auto layout = StripLayout::make({entry.size, entry.showsTitle}, pictureTabs);
  return tabItemView(entry, layout, pictureTabs);
}

TEST(TabItemView, AnIconTab) {
  const auto tab = tabOf(pinnedPair(), false);
  EXPECT_EQ(tab.frame, ViewRect(0, 0, 40, 40));
  EXPECT_EQ(tab.look.cornerRadius, 7);
  EXPECT_EQ(tab.look.tooltip, "Shopping\nGarden");
  ASSERT_EQ(keys(tab), (std::vector<std::string>{"icon", "pin", "count"}));
  EXPECT_EQ(tab.children[0].frame, ViewRect(7, 7, 26, 26));
  const auto& pin = tab.children[1];
  EXPECT_EQ(pin.frame, ViewRect(0, 27, 13, 13));
  EXPECT_EQ(pin.look.accessibleName, "Pinned");
  EXPECT_EQ(pin.look.rotation, -35);
  EXPECT_EQ(pin.look.shadow, (Shadow{.opacity = 0.55, .blurRadius = 2, .dy = -0.5}));
  EXPECT_EQ(tab.children[2].frame, ViewRect(24, 24, 14, 14));
  EXPECT_EQ(std::get<Label>(tab.children[2].children[0].look.content).text, "2");
}

// 80 × 54 without a title.
TEST(TabItemView, APictureTab) {
  auto entry = pinnedPair();
  const auto tab = tabOf(entry, true);
  ASSERT_EQ(keys(tab), (std::vector<std::string>{"picture", "icon", "pin", "count"}));
  EXPECT_EQ(tab.children[0].frame, ViewRect(4, 4, 72, 46));
  EXPECT_EQ(tab.children[0].look.cornerRadius, 4);
  EXPECT_EQ(tab.children[1].frame, ViewRect(80 - 15, 54 - 1 - 14, 14, 14));
  EXPECT_EQ(tab.children[2].frame.maxY(), 54);
  EXPECT_EQ(tab.children[3].frame.maxX(), 78);

  entry.showsTitle = true;
  const auto titled = tabOf(entry, true);
  ASSERT_EQ(keys(titled), (std::vector<std::string>{"picture", "icon", "title", "pin", "count"}));
  EXPECT_EQ(titled.children[0].frame, tab.children[0].frame);
  const auto& title = titled.children[2];
  EXPECT_GT(title.frame.minX(), titled.children[1].frame.maxX());
  EXPECT_LT(title.frame.maxX(), titled.frame.width());
  EXPECT_EQ(std::get<Label>(title.look.content).pointSize, 11);

  entry.image = std::nullopt;
  EXPECT_EQ(tabOf(entry, true).children[0].frame.size, (Size{26, 26})) << "until there is one";
}

}  // namespace
}  // namespace pellow
