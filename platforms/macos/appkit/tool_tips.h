#pragma once

#import <AppKit/AppKit.h>

#include <string>
#include <vector>

#include "views/view_tree.h"

namespace pellow {

// Tells AppKit where a panel has tool tips; their owner answers with the texts. Main thread.
class ToolTips {
 public:
  // The owner shows the tree stretched to its size. While nothing changes, a tool tip that is shown
  // stays.
  void show(const ViewTree& tree, Stretch stretch, NSView<NSViewToolTipOwner>* owner);

 private:
  struct Area {
    NSRect rect;
    std::string text;

    bool operator==(const Area& other) const {
      return NSEqualRects(rect, other.rect) && text == other.text;
    }
  };

  std::vector<Area> areas_;
};

}  // namespace pellow
