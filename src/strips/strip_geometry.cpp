#include "strips/strip_geometry.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace pellow {
namespace {

constexpr int laneLimit = 4;
constexpr double narrowestPanel = 34;  // without padding
constexpr double endMargin = 40;       // of the display's length, which a strip leaves free
constexpr double emptyZone = 60;       // length along the strip
constexpr double nameBandThickness = 18;
constexpr double sliver = 10;  // of a collapsed panel, without a name

bool isHorizontal(std::optional<StripEdge> snap) { return snap && isHorizontalStrip(*snap); }

Size slack(const AppKitRect& visibleFrame, Size size) {
  return {std::max(visibleFrame.width() - size.width, 0.0),
          std::max(visibleFrame.height() - size.height, 0.0)};
}

AppKitPoint expandedOrigin(const TabZone& zone, Size size, const AppKitRect& visibleFrame) {
  const auto [slackX, slackY] = slack(visibleFrame, size);
  AppKitPoint origin{visibleFrame.minX() + slackX * zone.position.x,
                     visibleFrame.minY() + slackY * (1 - zone.position.y)};
  if (!zone.snap) return origin;
  switch (*zone.snap) {
    case StripEdge::left:
      origin.x = visibleFrame.minX() + StripGeometry::inset;
      break;
    case StripEdge::right:
      origin.x = visibleFrame.maxX() - size.width - StripGeometry::inset;
      break;
    case StripEdge::top:
      origin.y = visibleFrame.maxY() - size.height - StripGeometry::inset;
      break;
    case StripEdge::bottom:
      origin.y = visibleFrame.minY() + StripGeometry::inset;
      break;
  }
  return origin;
}

// Fraction 0 to 1 of a distance; `otherwise` when there is no distance.
double fraction(double part, double whole, double otherwise) {
  return whole > 0 ? std::clamp(part / whole, 0.0, 1.0) : otherwise;
}

}  // namespace

StripRun StripRun::make(std::optional<StripEdge> snap,
                        const std::optional<AppKitRect>& visibleFrame, bool pictureTabs) {
  const bool horizontal = isHorizontal(snap);
  double available = 0;
  if (visibleFrame)
    available = (horizontal ? visibleFrame->width() : visibleFrame->height()) - endMargin;
  return {.horizontal = horizontal,
          .available = available,
          .reverseLanes = snap == StripEdge::right || snap == StripEdge::bottom,
          .pictureTabs = pictureTabs};
}

StripGeometry::StripGeometry(const std::vector<StripItem>& items, const StripRun& run) : run_(run) {
  layouts_.reserve(items.size());
  for (const auto& item : items) layouts_.push_back(StripLayout::make(item, run.pictureTabs));
  pack();
  panelSize_ = measurePanel();
}

StripGeometry StripGeometry::make(const std::vector<StripItem>& items, const StripRun& run) {
  return {fitted(items, run), run};
}

std::vector<StripItem> StripGeometry::fitted(std::vector<StripItem> items, const StripRun& run) {
  if (items.empty() || run.available <= 0) return items;
  double length = spacing * static_cast<double>(items.size() - 1);
  for (const auto& item : items) {
    const auto size = StripLayout::make(item, run.pictureTabs).itemSize;
    length += run.horizontal ? size.width : size.height;
  }
  const double room = laneLimit * run.available;
  if (length <= room) return items;
  for (auto& item : items) item.size = std::max(item.size * (room / length), smallestTab);
  return items;
}

double StripGeometry::along(const StripLayout& layout) const {
  return run_.horizontal ? layout.itemSize.width : layout.itemSize.height;
}

double StripGeometry::cross(const StripLayout& layout) const {
  return run_.horizontal ? layout.itemSize.height : layout.itemSize.width;
}

void StripGeometry::pack() {
  laneOf_.reserve(layouts_.size());
  offsetInLane_.reserve(layouts_.size());
  int lane = 0;
  double offset = 0;
  for (const auto& layout : layouts_) {
    const bool overflows = run_.available > 0 && offset + along(layout) > run_.available;
    if (offset > 0 && overflows && lane + 1 < laneLimit) {
      ++lane;
      offset = 0;
    }
    laneOf_.push_back(lane);
    offsetInLane_.push_back(offset);
    laneThickness_.resize(static_cast<std::size_t>(lane) + 1);
    laneThickness_.back() = std::max(laneThickness_.back(), cross(layout));
    offset += along(layout) + spacing;
  }
}

Size StripGeometry::measurePanel() const {
  double longest = 0;
  for (std::size_t i = 0; i < count(); ++i)
    longest = std::max(longest, offsetInLane_[i] + along(layouts_[i]));
  double thickness = std::accumulate(laneThickness_.begin(), laneThickness_.end(), 0.0);
  if (!laneThickness_.empty())
    thickness += spacing * static_cast<double>(laneThickness_.size() - 1);

  // The minimum is for the width, whichever way the strip runs.
  const Size block = run_.horizontal ? Size{longest, thickness} : Size{thickness, longest};
  return {std::max(block.width, narrowestPanel) + 2 * padding, block.height + 2 * padding};
}

ViewPoint StripGeometry::itemOrigin(std::size_t index) const {
  const auto& layout = layouts_[index];
  double laneStart = padding;
  for (int lane = 0; lane < laneOf_[index]; ++lane) laneStart += laneThickness_[lane] + spacing;

  const double panelCross = run_.horizontal ? panelSize_.height : panelSize_.width;
  const double across = run_.reverseLanes ? panelCross - laneStart - cross(layout) : laneStart;
  if (run_.horizontal) return {padding + offsetInLane_[index], across};
  return {across, panelSize_.height - padding - offsetInLane_[index] - layout.itemSize.height};
}

ViewRect StripGeometry::itemFrame(std::size_t index) const {
  return {itemOrigin(index), layouts_[index].itemSize};
}

AppKitRect StripGeometry::itemFrameOnScreen(std::size_t index, const TabZone& zone,
                                            const AppKitRect& visibleFrame) const {
  const auto panel = expandedOrigin(zone, panelSize_, visibleFrame);
  const auto item = itemFrame(index);
  return {panel.x + item.minX(), panel.y + item.minY(), item.width(), item.height()};
}

StripChrome StripChrome::make(const StripGeometry& geometry, const TabZone& zone) {
  const bool horizontal = isHorizontal(zone.snap);
  const double shortest = geometry.count() == 0 ? emptyZone : 0;
  const auto block = geometry.panelSize();
  const double n = zone.showsName ? nameBandThickness : 0;

  StripChrome chrome;
  chrome.nameBandAcross = horizontal || !zone.snap;
  chrome.nameThickness = n;
  chrome.tabsSize = horizontal ? Size{std::max(block.width, shortest), block.height}
                               : Size{block.width, std::max(block.height, shortest)};
  const auto [width, height] = chrome.tabsSize;
  const bool bandAfterTabs = zone.snap != StripEdge::right && zone.snap != StripEdge::top;
  if (chrome.nameBandAcross) {
    chrome.totalSize = {width, height + n};
    chrome.nameBand = {0, bandAfterTabs ? height : 0, width, n};
    chrome.tabsOrigin = {0, bandAfterTabs ? 0 : n};
  } else {
    chrome.totalSize = {width + n, height};
    chrome.nameBand = {bandAfterTabs ? width : 0, 0, n, height};
    chrome.tabsOrigin = {bandAfterTabs ? 0 : n, 0};
  }
  return chrome;
}

AppKitRect stripFrame(const TabZone& zone, Size size, const AppKitRect& visibleFrame,
                      bool expanded) {
  AppKitRect frame(expandedOrigin(zone, size, visibleFrame), size);
  if (expanded) return frame;

  const double peek = zone.showsName ? nameBandThickness : sliver;
  switch (zone.snap.value_or(StripEdge::bottom)) {
    case StripEdge::left:
      frame.origin.x = visibleFrame.minX() + peek - size.width;
      break;
    case StripEdge::right:
      frame.origin.x = visibleFrame.maxX() - peek;
      break;
    case StripEdge::top:
      frame.origin.y = visibleFrame.maxY() - peek;
      break;
    case StripEdge::bottom:
      frame.origin.y = visibleFrame.minY() + peek - size.height;
      break;
  }
  return frame;
}

StripPlacement StripPlacement::forDropped(const AppKitRect& frame, const AppKitRect& visibleFrame,
                                          double snapDistance) {
  const auto [slackX, slackY] = slack(visibleFrame, frame.size);
  const double left = frame.minX() - visibleFrame.minX();
  const double right = visibleFrame.maxX() - frame.maxX();
  const double top = visibleFrame.maxY() - frame.maxY();
  const double bottom = frame.minY() - visibleFrame.minY();

  StripPlacement placement;
  placement.position = {fraction(left, slackX, 0), 1 - fraction(bottom, slackY, 0)};
  // In the order of the edges; the first of equals wins.
  const std::array distances{left, right, top, bottom};
  const auto nearest = std::ranges::min_element(distances);
  if (*nearest <= snapDistance)
    placement.snap = allCases<StripEdge>()[static_cast<std::size_t>(nearest - distances.begin())];
  return placement;
}

}  // namespace pellow
