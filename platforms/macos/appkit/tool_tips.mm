#include "platforms/macos/appkit/tool_tips.h"

#include <utility>

namespace pellow {

void ToolTips::show(const ViewTree& tree, const CGAffineTransform& toOwner,
                    NSView<NSViewToolTipOwner>* owner) {
  std::vector<Area> areas;
  tree.visit([&](const auto& node, const CGAffineTransform& toPanel) {
    if (node->look.tooltip.empty()) return;
    const auto transform = CGAffineTransformConcat(toPanel, toOwner);
    areas.push_back({CGRectApplyAffineTransform(node->bounds(), transform), node->look.tooltip});
  });
  if (areas == areas_) return;
  areas_ = std::move(areas);
  [owner removeAllToolTips];
  for (const auto& area : areas_) [owner addToolTipRect:area.rect owner:owner userData:nullptr];
}

}  // namespace pellow
