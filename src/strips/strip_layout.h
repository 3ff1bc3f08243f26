#pragma once

#include "base/geometry.h"

namespace pellow {

// What the size of a tab depends on.
struct StripItem {
  double size = 0;  // the tab size in points
  bool showsTitle = false;

  bool operator==(const StripItem&) const = default;
};

// The size of one tab. With s the tab size:
//
//               plain           with title
//   icon        s × s           5.3 s × 0.82 s
//   picture     2 s × 1.35 s    5.5 s × 1.35 s
struct StripLayout {
  Size itemSize;        // points
  double iconSide = 0;  // points; of the square icon inside

  bool operator==(const StripLayout&) const = default;

  static StripLayout make(const StripItem& item, bool pictureTabs);
};

}  // namespace pellow
