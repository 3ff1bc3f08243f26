#pragma once

#include <optional>
#include <vector>

#include "access/target_window.h"
#include "model/tab_item.h"

namespace pellow {

// Windows that were asked to minimize and did not answer in time. One that goes later gets its tab
// then, whatever the preferences say. Main thread.
class LateMinimizes {
 public:
  void expect(const TabItem& tab);

  // The tab of this window, which is no longer expected; nothing when it was not.
  std::optional<TabItem> take(const TargetWindow& window);

  // If the window is minimized after this, it was not the program's doing.
  void forget(const TargetWindow& window) { take(window); }

  // Oldest first.
  const std::vector<TabItem>& tabs() const { return tabs_; }

 private:
  std::vector<TabItem> tabs_;
};

}  // namespace pellow
