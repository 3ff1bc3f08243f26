#include "strips/tab_preview_panel.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

#include "platforms/simulated/named_image.h"

namespace pellow {
namespace {

// Of a right strip 44 points wide.
TEST(TabPreview, StandsBesideItsTabAsLargeAsItsPictureAsks) {
  const auto picture = [](double width, double height) {
    return Image(std::make_shared<simulated::NamedImage>("picture", Size{width, height}));
  };
  TabPreview preview{.tabFrame = {1395, 400, 34, 34},
                     .snap = StripEdge::right,
                     .visibleFrame = {0, 70, 1440, 805},
                     .width = 320};
  EXPECT_EQ(preview.contentSize(), (Size{320, 344})) << "square without a picture";
  EXPECT_EQ(preview.frame(), AppKitRect(1395 - 10 - 320, 417 - 172, 320, 344));
  preview.entry.previewImage = picture(800, 400);
  EXPECT_EQ(preview.contentSize(), (Size{320, 152 + 40}));
  preview.entry.previewImage = picture(100, 1000);
  preview.visibleFrame = {0, 0, 1440, 300};
  EXPECT_EQ(preview.contentSize().height, 220 + 40);
  preview.visibleFrame = {0, 0, 1440, 150};
  EXPECT_EQ(preview.contentSize().height, 80 + 40);

  preview.entry.previewImage = picture(800, 400);
  preview.visibleFrame = {0, 70, 1440, 805};
  const auto frameFor = [&](std::optional<StripEdge> snap, AppKitRect tab) {
    preview.snap = snap;
    preview.tabFrame = tab;
    return preview.frame();
  };
  EXPECT_EQ(frameFor(StripEdge::left, {11, 400, 34, 34}).origin, (AppKitPoint{55, 321}));
  EXPECT_EQ(frameFor(StripEdge::top, {700, 830, 34, 34}).origin, (AppKitPoint{557, 628}));
  EXPECT_EQ(frameFor(StripEdge::bottom, {700, 81, 34, 34}).origin, (AppKitPoint{557, 125}));
  EXPECT_EQ(frameFor(StripEdge::bottom, {11, 81, 34, 34}).minX(), 4) << "inside the visible frame";
  EXPECT_EQ(frameFor(StripEdge::left, {11, 840, 34, 34}).maxY(), 871);
  EXPECT_EQ(frameFor(std::nullopt, {700, 400, 34, 34}).minX(), 744) << "floating, to the right";
  EXPECT_EQ(frameFor(std::nullopt, {1200, 400, 34, 34}).maxX(), 1190) << "or where there is room";
}

}  // namespace
}  // namespace pellow
