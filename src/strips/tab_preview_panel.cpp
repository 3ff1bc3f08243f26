#include "strips/tab_preview_panel.h"

#include <algorithm>
#include <utility>

namespace pellow {
namespace {

constexpr double padding = 8;       // around the picture and the title
constexpr double titleHeight = 24;  // of the room for the title, above the padding
constexpr double gap = 10;          // to the tab
constexpr double margin = 4;        // inside the visible frame
constexpr double displayMargin = 40;
constexpr double smallestImage = 80;  // points; how far a low display cuts the picture
constexpr double largestIcon = 128;
constexpr Seconds showDelay = 0.35;
constexpr Seconds hideDelay = 0.25;

double aspectOf(const std::optional<Image>& image) {
  const auto size = image ? image->size() : Size();
  return size.width > 0 && size.height > 0 ? size.height / size.width : 1;
}

// `low` counts where there is no room for both.
double within(double value, double low, double high) {
  return std::max(std::min(value, high), low);
}

ViewRect centredSquare(const ViewRect& area, double side) {
  return {area.midX() - side / 2, area.midY() - side / 2, side, side};
}

}  // namespace

Size TabPreview::contentSize() const {
  const double room = visibleFrame.height() - displayMargin - 2 * padding - titleHeight;
  const double asked = (width - 2 * padding) * aspectOf(entry.previewImage);
  return {width, std::min(asked, std::max(room, smallestImage)) + 2 * padding + titleHeight};
}

AppKitRect TabPreview::frame() const {
  const auto size = contentSize();
  const auto& tab = tabFrame;
  AppKitPoint origin{tab.midX() - size.width / 2, tab.midY() - size.height / 2};
  const bool fitsOnTheRight = tab.maxX() + gap + size.width + margin <= visibleFrame.maxX();
  switch (snap.value_or(fitsOnTheRight ? StripEdge::left : StripEdge::right)) {
    case StripEdge::left:
      origin.x = tab.maxX() + gap;
      break;
    case StripEdge::right:
      origin.x = tab.minX() - gap - size.width;
      break;
    case StripEdge::top:
      origin.y = tab.minY() - gap - size.height;
      break;
    case StripEdge::bottom:
      origin.y = tab.maxY() + gap;
      break;
  }
  origin.x =
      within(origin.x, visibleFrame.minX() + margin, visibleFrame.maxX() - margin - size.width);
  origin.y =
      within(origin.y, visibleFrame.minY() + margin, visibleFrame.maxY() - margin - size.height);
  return {origin, size};
}

// Without a picture of the window, its application's icon stands there.
View TabPreview::content() const {
  const auto size = contentSize();
  const double inner = size.width - 2 * padding;
  const ViewRect pictureArea(padding, padding + titleHeight, inner,
                             size.height - 2 * padding - titleHeight);
  View content{.key = "preview",
               .frame = {{}, size},
               .look = {.content = Backdrop{}, .cornerRadius = 10, .accessibleName = entry.title},
               .actions = actions};
  if (entry.previewImage) {
    content.children.push_back(
        {.key = "picture",
         .frame = pictureArea,
         .look = {.content = Picture{*entry.previewImage}, .cornerRadius = 5}});
  } else if (entry.icon) {
    const double side = std::min({largestIcon, pictureArea.width(), pictureArea.height()});
    content.children.push_back({.key = "icon",
                                .frame = centredSquare(pictureArea, side),
                                .look = {.content = Picture{*entry.icon}}});
  }
  content.children.push_back(
      {.key = "title",
       .frame = {padding, padding, inner, 16},
       .look = {.content = Label{
                    .text = entry.title, .pointSize = 12, .alignment = TextAlignment::centre}}});
  return content;
}

void TabPreviewPanel::scheduleShow(std::function<std::optional<TabPreview>()> preview) {
  keep();
  showWork_ = around_.mainQueue.after(showDelay, [this, preview = std::move(preview)] {
    auto shown = preview();
    showWork_.cancel();
    shown ? render(*shown) : hide();
  });
}

void TabPreviewPanel::scheduleHide() {
  showWork_.cancel();
  if (!isVisible()) return;
  hideWork_ = around_.mainQueue.after(hideDelay, [this] {
    hideWork_.cancel();
    if (!isUnderPointer()) hide();
  });
}

// A view that is taken away beneath the pointer is not told that it left.
void TabPreviewPanel::update(const TabPreview& preview) {
  render(preview);
  if (showWork_ || hideWork_ || isUnderPointer()) return;
  if (!preview.tabFrame.contains(around_.pointer.pointerLocation())) scheduleHide();
}

void TabPreviewPanel::render(const TabPreview& preview) {
  if (!panel_) panel_ = around_.panels.makePanel("pellow-preview", WindowShadow::yes);
  auto content = preview.content();
  content.actions.onHoverChanged = [this](bool inside) { hoverChanged(inside); };
  panel_->setFrame(preview.frame());
  panel_->setContent(content);
  panel_->orderFront();
}

void TabPreviewPanel::hide() {
  hideWork_.cancel();
  if (!isVisible()) return;
  isHovered_ = false;
  panel_->orderOut();
  if (onHidden) onHidden();
}

void TabPreviewPanel::dismiss() {
  showWork_.cancel();
  hide();
}

void TabPreviewPanel::hoverChanged(bool inside) {
  isHovered_ = inside;
  inside ? keep() : scheduleHide();
}

bool TabPreviewPanel::isUnderPointer() const {
  if (!isVisible()) return false;
  return isHovered_ || panel_->frame().contains(around_.pointer.pointerLocation());
}

}  // namespace pellow
