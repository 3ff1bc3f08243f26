#pragma once

#include <list>
#include <optional>

#include "access/target_window.h"
#include "model/tab_item.h"

namespace pellow {

// The windows that the controller is working on right now. Actions suspend while other applications
// answer, so between two steps a window may be hidden and have no tab: then it stands here. Main
// thread.
class Ledger {
 public:
  enum class Way { away, back };

  struct Entry {
    TargetWindow window;
    Way way;
    // The tab that comes or goes, from before the window is touched: enough to put it back.
    std::optional<TabItem> tab;
  };

  // A window's place in the ledger, given up when the claim ends.
  class [[nodiscard]] Claim {
   public:
    Claim(Claim&& other) noexcept;
    Claim& operator=(Claim&&) = delete;
    ~Claim();

    // The window is about to be hidden, or is being brought back, as this tab says.
    void setTab(TabItem tab);

   private:
    friend Ledger;
    Claim(Ledger& ledger, std::list<Entry>::iterator entry) : ledger_(&ledger), entry_(entry) {}

    Ledger* ledger_;
    std::list<Entry>::iterator entry_;
  };

  Ledger() = default;
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;

  Claim claim(TargetWindow window, Way way);

  bool contains(const TargetWindow& window) const;
  bool contains(const TargetWindow& window, Way way) const;

  // In the order in which the windows were claimed.
  const std::list<Entry>& entries() const { return entries_; }

 private:
  std::list<Entry> entries_;
};

}  // namespace pellow
