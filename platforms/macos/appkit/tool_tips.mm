#include "platforms/macos/appkit/tool_tips.h"

#include <utility>

#include "platforms/macos/foundation/geometry.h"

namespace pellow {

void ToolTips::show(const ViewTree& tree, Stretch stretch, NSView<NSViewToolTipOwner>* owner) {
  std::vector<Area> areas;
  tree.visit([&](const auto& node, const ViewTransform& toContent) {
    if (node->look.tooltip.empty()) return;
    const auto area = stretch.toPanel(toContent.map(node->bounds()));
    areas.push_back({toNSRect(area), node->look.tooltip});
  });
  if (areas == areas_) return;
  areas_ = std::move(areas);
  [owner removeAllToolTips];
  for (const auto& area : areas_) [owner addToolTipRect:area.rect owner:owner userData:nullptr];
}

}  // namespace pellow
