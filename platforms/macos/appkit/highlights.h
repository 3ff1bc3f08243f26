#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "platforms/macos/appkit/view_canvas.h"
#include "platforms/macos/appkit/view_tree.h"

namespace pellow {

// Fades the highlights of a panel's views in and out. Main thread.
class Highlights {
 public:
  Highlights(std::shared_ptr<const ViewTree> tree, PellowViewCanvas* canvas);
  Highlights(const Highlights&) = delete;
  Highlights& operator=(const Highlights&) = delete;
  ~Highlights();

  // Leads each highlight to what `isHovered` says of its view.
  void begin();
  void end();

 private:
  void advance();

  std::shared_ptr<const ViewTree> tree_;
  PellowViewCanvas* const canvas_;
  NSTimer* timer_ = nil;           // nil while nothing changes
  NSTimeInterval latestStep_ = 0;  // of the system's uptime
};

}  // namespace pellow
