#pragma once

#include <optional>
#include <vector>

#include "access/target_window.h"
#include "model/tab_item.h"

namespace pellow {

// The windows that the program asked to minimize and that did not answer in time. One that goes
// later gets its tab then, whatever the user prefers. Main thread.
class LateMinimizes {
 public:
  void expect(const TabItem& tab);

  // The tab of this window, which is not expected any more; nothing when it was not.
  std::optional<TabItem> take(const TargetWindow& window);

  // Should the window be minimized after this, that is somebody else's wish.
  void forget(const TargetWindow& window) { take(window); }

  // The oldest first.
  const std::vector<TabItem>& tabs() const { return tabs_; }

 private:
  std::vector<TabItem> tabs_;
};

}  // namespace pellow
