#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "base/geometry.h"
#include "model/tab_zone.h"
#include "strips/strip_layout.h"

// Where everything in a strip is: pure arithmetic, in points. Screen positions are in AppKit space,
// positions inside the panel in View space with the origin at the panel's bottom left.

namespace pellow {

// How the tabs of one strip run.
struct StripRun {
  bool horizontal = false;    // along x; else along y, downward
  double available = 0;       // usable length along the strip; 0 or less: nothing wraps
  bool reverseLanes = false;  // lanes are stacked from the far side of the panel
  bool pictureTabs = false;   // tabs show pictures of their windows

  bool operator==(const StripRun&) const = default;

  // How a zone's strip runs on a display. Without an edge (floating) it is vertical; without a
  // display nothing wraps.
  static StripRun make(std::optional<StripEdge> snap, const std::optional<AppKitRect>& visibleFrame,
                       bool pictureTabs);
};

// The tabs of one strip, packed into at most four lanes:
//
//   vertical                          vertical, reversed lanes (right edge)
//   ┌─────────────┐                   ┌─────────────┐
//   │ [0]  [3]    │                   │    [3]  [0] │
//   │ [1]  [4]    │                   │    [4]  [1] │
//   │ [2]         │                   │         [2] │
//   └─────────────┘                   └─────────────┘
class StripGeometry {
 public:
  static constexpr double padding = 5;       // between the panel's border and the tabs
  static constexpr double spacing = 4;       // between neighbouring tabs, and between lanes
  static constexpr double inset = 6;         // between a snapped panel and its edge
  static constexpr double smallestTab = 14;  // tab size; shrinking stops here

  // Packs the items as they are.
  StripGeometry(const std::vector<StripItem>& items, const StripRun& run);

  // The geometry of a zone's items, shrunk if need be, then packed.
  static StripGeometry make(const std::vector<StripItem>& items, const StripRun& run);

  // The items, all shrunk alike if even four full lanes would not hold them.
  static std::vector<StripItem> fitted(std::vector<StripItem> items, const StripRun& run);

  std::size_t count() const { return layouts_.size(); }
  const StripRun& run() const { return run_; }
  const std::vector<StripLayout>& layouts() const { return layouts_; }
  const std::vector<int>& laneOf() const { return laneOf_; }                   // 0 to 3
  const std::vector<double>& offsetInLane() const { return offsetInLane_; }    // along the strip
  const std::vector<double>& laneThickness() const { return laneThickness_; }  // by lane

  // The tab block with its padding.
  Size panelSize() const { return panelSize_; }

  // Inside the tab block.
  ViewPoint itemOrigin(std::size_t index) const;
  ViewRect itemFrame(std::size_t index) const;

  // Where a tab is on the screen when the zone's strip is there, expanded. Ignores the name band
  // and the minimum of an empty zone.
  AppKitRect itemFrameOnScreen(std::size_t index, const TabZone& zone,
                               const AppKitRect& visibleFrame) const;

 private:
  double along(const StripLayout& layout) const;
  double cross(const StripLayout& layout) const;
  void pack();
  Size measurePanel() const;

  StripRun run_;
  std::vector<StripLayout> layouts_;
  std::vector<int> laneOf_;
  std::vector<double> offsetInLane_;
  std::vector<double> laneThickness_;
  Size panelSize_;
};

// A strip panel's decoration around its tab block: the name band, on the side of the tabs away from
// the display's edge; above them in a floating zone.
//
//   left              right             bottom, floating    top
//   ┌──────┬───┐      ┌───┬──────┐      ┌──────────────┐    ┌──────────────┐
//   │ tabs │ n │      │ n │ tabs │      │     name     │    │     tabs     │
//   │      │ a │      │ a │      │      ├──────────────┤    ├──────────────┤
//   │      │ m │      │ m │      │      │     tabs     │    │     name     │
//   │      │ e │      │ e │      │      └──────────────┘    └──────────────┘
//   └──────┴───┘      └───┴──────┘
struct StripChrome {
  bool nameBandAcross = false;  // runs across the panel; else down the side, its text rotated
  double nameThickness = 0;     // 0 when the zone does not show its name
  Size tabsSize;                // the tab block; an empty one is 60 long along the strip
  Size totalSize;               // of the panel
  ViewRect nameBand;            // in the panel
  ViewPoint tabsOrigin;         // of the tab block in the panel

  bool operator==(const StripChrome&) const = default;

  static StripChrome make(const StripGeometry& geometry, const TabZone& zone);
};

// Where a zone's panel of this size stands on a display. Collapsed, a sliver of 10 points stays on
// the display, 18 with the zone's name.
AppKitRect stripFrame(const TabZone& zone, Size size, const AppKitRect& visibleFrame,
                      bool expanded);

// The placement of a zone on its display.
struct StripPlacement {
  ZonePosition position;
  std::optional<StripEdge> snap;  // absent: floating

  bool operator==(const StripPlacement&) const = default;

  // The placement for a panel dropped there: snapped to the nearest edge if that is at most
  // `snapDistance` away, else floating.
  static StripPlacement forDropped(const AppKitRect& frame, const AppKitRect& visibleFrame,
                                   double snapDistance);
};

}  // namespace pellow
