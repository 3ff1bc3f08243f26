#include <vector>

#include <gtest/gtest.h>

#include "strips/strip_geometry.h"

namespace pellow {
namespace {

constexpr double near = 1e-9;

std::vector<StripItem> tabs(int count, double size = 30) {
  return std::vector<StripItem>(count, {size, false});
}

TEST(StripLayout, TabsAreSquaresPillsOrPictures) {
  const auto size = [](bool showsTitle, bool pictureTabs) {
    return StripLayout::make({100, showsTitle}, pictureTabs).itemSize;
  };
  EXPECT_EQ(size(false, false), (Size{100, 100}));
  EXPECT_EQ(size(true, false), (Size{530, 82}));
  EXPECT_EQ(size(false, true), (Size{200, 135}));
  EXPECT_EQ(size(true, true), (Size{550, 135}));
  EXPECT_EQ(StripLayout::make({100, true}, true).iconSide, 65);
}

TEST(StripRun, FollowsTheEdgeAndTheDisplay) {
  const AppKitRect display(0, 70, 1440, 800);
  using enum StripEdge;
  for (const auto edge : {left, right, top, bottom}) {
    const auto run = StripRun::make(edge, display, false);
    EXPECT_EQ(run.horizontal, edge == top || edge == bottom);
    EXPECT_EQ(run.available, run.horizontal ? 1400 : 760);
    EXPECT_EQ(run.reverseLanes, edge == right || edge == bottom);
  }
  EXPECT_EQ(StripRun::make(std::nullopt, display, true),
            (StripRun{.available = 760, .pictureTabs = true}));
  EXPECT_EQ(StripRun::make(left, std::nullopt, false).available, 0);
}

TEST(StripGeometry, WrapsAtTheFirstTabThatWouldPassTheEnd) {
  // 30 + 4 + 30 + 4 + 30 = 98
  const StripGeometry fits(tabs(3), {.available = 98});
  EXPECT_EQ(fits.laneOf(), (std::vector{0, 0, 0}));
  EXPECT_EQ(fits.offsetInLane(), (std::vector<double>{0, 34, 68}));

  const StripGeometry wraps(tabs(3), {.available = 97.5});
  EXPECT_EQ(wraps.laneOf(), (std::vector{0, 0, 1}));
  EXPECT_EQ(wraps.offsetInLane(), (std::vector<double>{0, 34, 0}));
  EXPECT_EQ(wraps.panelSize(), (Size{30 + 4 + 30 + 10, 64 + 10}));

  for (const double available : {0.0, -5.0})
    EXPECT_EQ(StripGeometry(tabs(50), {.available = available}).laneOf().back(), 0) << "unlimited";
}

TEST(StripGeometry, TheFourthLaneTakesTheSurplus) {
  const StripGeometry geometry(tabs(7), {.available = 30});
  EXPECT_EQ(geometry.laneOf(), (std::vector{0, 1, 2, 3, 3, 3, 3}));
  EXPECT_EQ(geometry.offsetInLane().back(), 3 * 34);

  const StripGeometry tooLong(tabs(2), {.available = 20});
  EXPECT_EQ(tooLong.laneOf(), (std::vector{0, 1})) << "a tab alone may be too long for its lane";
}

TEST(StripGeometry, ALaneIsAsThickAsItsThickestTab) {
  const std::vector<StripItem> items{{20, false}, {40, false}, {30, false}, {10, false}};
  const StripGeometry row(items, {.horizontal = true, .available = 64});
  EXPECT_EQ(row.laneOf(), (std::vector{0, 0, 1, 1}));
  EXPECT_EQ(row.laneThickness(), (std::vector<double>{40, 30}));
  EXPECT_EQ(row.panelSize(), (Size{64 + 10, 40 + 4 + 30 + 10}));

  const StripGeometry titled({{20, true}}, {.horizontal = true});
  EXPECT_EQ(titled.panelSize(), (Size{106 + 10, 16.4 + 10}));
  for (const bool horizontal : {true, false})
    EXPECT_EQ(StripGeometry(tabs(1, 14), {.horizontal = horizontal}).panelSize(), (Size{44, 24}))
        << "only the width has a minimum";
}

TEST(StripGeometry, ShrinksOnlyWhatFourLanesWouldNotHold) {
  const StripRun run{.available = 100};
  // 12 tabs of 30 are 12 * 30 + 11 * 4 = 404 long.
  const auto shrunk = StripGeometry::fitted(tabs(12), run);
  for (const auto& item : shrunk) EXPECT_NEAR(item.size, 30 * 400 / 404.0, near);
  EXPECT_EQ(StripGeometry::fitted(tabs(11), run), tabs(11));
  EXPECT_EQ(StripGeometry::fitted(tabs(12), {.available = 101}), tabs(12)) << "just fits";
  EXPECT_EQ(StripGeometry::fitted(tabs(12), {.available = 0}), tabs(12));
  EXPECT_TRUE(StripGeometry::fitted({}, run).empty());

  auto mixed = tabs(1000);
  mixed.front() = {200, true};
  const auto least = StripGeometry::fitted(mixed, run);
  EXPECT_EQ(least.back(), (StripItem{14, false}));
  EXPECT_TRUE(least.front().showsTitle);
  EXPECT_EQ(StripGeometry::make(mixed, run).laneOf().back(), 3) << "four lanes still overflow";
}

TEST(StripGeometry, LaneZeroIsNearUnlessReversed) {
  const std::vector<StripItem> items{{30, false}, {20, false}, {30, false}};
  const StripRun vertical{.available = 60};
  const StripGeometry column(items, vertical);
  ASSERT_EQ(column.panelSize(), (Size{74, 64}));
  EXPECT_EQ(column.itemFrame(0), ViewRect(5, 29, 30, 30)) << "the first tab is at the top";
  EXPECT_EQ(column.itemFrame(1), ViewRect(5, 5, 20, 20));
  EXPECT_EQ(column.itemFrame(2), ViewRect(39, 29, 30, 30));

  const StripGeometry reversed(items, {.available = 60, .reverseLanes = true});
  EXPECT_EQ(reversed.itemFrame(0), ViewRect(39, 29, 30, 30));
  EXPECT_EQ(reversed.itemFrame(1), ViewRect(49, 5, 20, 20));
  EXPECT_EQ(reversed.itemFrame(2), ViewRect(5, 29, 30, 30));

  const StripGeometry row(items, {.horizontal = true, .available = 60});
  EXPECT_EQ(row.itemFrame(1), ViewRect(39, 5, 20, 20));
  EXPECT_EQ(row.itemFrame(2), ViewRect(5, 39, 30, 30));
  const StripGeometry reversedRow(items, {true, 60, true});
  EXPECT_EQ(reversedRow.itemFrame(1), ViewRect(39, 49, 20, 20));
  EXPECT_EQ(reversedRow.itemFrame(2), ViewRect(5, 5, 30, 30));
}

// A display to the right of and below the main one, with room taken at its bottom.
const AppKitRect visible(1000, -500, 800, 600);

TabZone zoneAt(ZonePosition position, std::optional<StripEdge> snap = {}, bool showsName = false) {
  return {.position = position, .showsName = showsName, .snap = snap};
}

TEST(StripPlacement, TheExpandedFrameSlidesAlongItsEdge) {
  const Size size{100, 200};
  const auto frame = [&](ZonePosition position, std::optional<StripEdge> snap) {
    return stripFrame(zoneAt(position, snap), size, visible, true);
  };
  EXPECT_EQ(frame({0, 0}, {}), AppKitRect(1000, -100, 100, 200)) << "top left";
  EXPECT_EQ(frame({1, 1}, {}), AppKitRect(1700, -500, 100, 200)) << "bottom right";
  EXPECT_EQ(frame({0.9, 0.25}, StripEdge::left), AppKitRect(1006, -200, 100, 200));
  EXPECT_EQ(frame({0, 0.25}, StripEdge::right), AppKitRect(1694, -200, 100, 200));
  EXPECT_EQ(frame({0.5, 1}, StripEdge::top), AppKitRect(1350, -106, 100, 200));
  EXPECT_EQ(frame({0.5, 0}, StripEdge::bottom), AppKitRect(1350, -494, 100, 200));
  EXPECT_EQ(stripFrame(zoneAt({1, 0}), {900, 700}, visible, true), AppKitRect(1000, -500, 900, 700))
      << "too large to slide";
}

TEST(StripPlacement, ACollapsedStripLeavesASliver) {
  const Size size{100, 200};
  const auto frame = [&](std::optional<StripEdge> snap, bool showsName = false) {
    return stripFrame(zoneAt({0.5, 0.5}, snap, showsName), size, visible, false);
  };
  EXPECT_EQ(frame(StripEdge::left), AppKitRect(910, -300, 100, 200));
  EXPECT_EQ(frame(StripEdge::left, true), AppKitRect(918, -300, 100, 200));
  EXPECT_EQ(frame(StripEdge::right), AppKitRect(1790, -300, 100, 200));
  EXPECT_EQ(frame(StripEdge::top), AppKitRect(1350, 90, 100, 200));
  EXPECT_EQ(frame(StripEdge::bottom, true), AppKitRect(1350, -682, 100, 200));
  EXPECT_EQ(frame(std::nullopt), AppKitRect(1350, -690, 100, 200)) << "as at the bottom";
}

TEST(StripPlacement, ATabsFrameOnTheScreenIgnoresTheNameBand) {
  const StripGeometry geometry(tabs(2), {.reverseLanes = true});  // 44 × 74
  const auto zone = zoneAt({1, 0.5}, StripEdge::right, true);
  EXPECT_EQ(geometry.itemFrameOnScreen(1, zone, visible),
            AppKitRect(1800 - 44 - 6 + 9, -500 + (600 - 74) / 2.0 + 5, 30, 30));
}

TEST(StripChrome, TheNameIsOnTheSideAwayFromTheEdge) {
  const StripGeometry column(tabs(3), {});                 // 44 × 108
  const StripGeometry row(tabs(3), {.horizontal = true});  // 108 × 40
  const auto chrome = [](const StripGeometry& geometry, std::optional<StripEdge> snap) {
    return StripChrome::make(geometry, zoneAt({}, snap, true));
  };
  const Size tall{44, 108}, wide{108, 40};
  EXPECT_EQ(chrome(column, StripEdge::left),
            (StripChrome{false, 18, tall, {62, 108}, {44, 0, 18, 108}, {0, 0}}));
  EXPECT_EQ(chrome(column, StripEdge::right),
            (StripChrome{false, 18, tall, {62, 108}, {0, 0, 18, 108}, {18, 0}}));
  EXPECT_EQ(chrome(row, StripEdge::top),
            (StripChrome{true, 18, wide, {108, 58}, {0, 0, 108, 18}, {0, 18}}));
  EXPECT_EQ(chrome(row, StripEdge::bottom),
            (StripChrome{true, 18, wide, {108, 58}, {0, 40, 108, 18}, {0, 0}}));
  EXPECT_EQ(chrome(column, std::nullopt),
            (StripChrome{true, 18, tall, {44, 126}, {0, 108, 44, 18}, {0, 0}}));
}

TEST(StripChrome, AnEmptyZoneIs60LongAndANamelessOneHasNoBand) {
  const StripGeometry column({}, {}), row({}, {.horizontal = true});
  EXPECT_EQ(StripChrome::make(column, zoneAt({}, StripEdge::right)).totalSize, (Size{44, 60}));
  EXPECT_EQ(StripChrome::make(row, zoneAt({}, StripEdge::top)).totalSize, (Size{60, 10}));
  EXPECT_EQ(StripChrome::make(column, zoneAt({}, {}, true)).totalSize, (Size{44, 78}));
  EXPECT_EQ(StripChrome::make(StripGeometry(tabs(1, 14), {}), zoneAt({})).totalSize, (Size{44, 24}))
      << "the minimum is that of an empty zone";
  EXPECT_EQ(StripChrome::make(column, zoneAt({}, StripEdge::right)).tabsOrigin, ViewPoint());
}

TEST(StripPlacement, DroppingSnapsToANearEdge) {
  const auto dropped = [](double x, double y) {
    return StripPlacement::forDropped({x, y, 100, 200}, visible, 48);
  };
  EXPECT_EQ(dropped(1048, -300).snap, StripEdge::left) << "exactly the distance";
  EXPECT_EQ(dropped(1048.5, -300).snap, std::nullopt);
  EXPECT_EQ(dropped(1660, -300).snap, StripEdge::right);
  EXPECT_EQ(dropped(1350, -110).snap, StripEdge::top);
  EXPECT_EQ(dropped(1350, -480).snap, StripEdge::bottom);
  EXPECT_EQ(dropped(1020, -120).snap, StripEdge::left) << "as near as the top";
  EXPECT_EQ(dropped(1680, -120).snap, StripEdge::right) << "as near as the top";
  EXPECT_EQ(dropped(1690, -105).snap, StripEdge::top);

  EXPECT_EQ(dropped(1350, -400).position, (ZonePosition{0.5, 0.75}));
  EXPECT_EQ(dropped(900, 300).position, (ZonePosition{0, 0}));
  EXPECT_EQ(dropped(1900, -900).position, (ZonePosition{1, 1}));
  EXPECT_EQ(StripPlacement::forDropped({1010, -480, 900, 700}, visible, 48).position,
            (ZonePosition{0, 1}))
      << "too large to slide";
}

}  // namespace
}  // namespace pellow
