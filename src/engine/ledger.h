#pragma once

#include <list>
#include <optional>
#include <utility>

#include "access/target_window.h"
#include "model/tab_item.h"

namespace pellow {

// The windows the engine is working on now. Actions suspend while other applications answer, so
// between two steps a window may be hidden without a tab: then it is here. Main thread.
class Ledger {
 public:
  enum class Way { away, back };

  struct Entry {
    TargetWindow window;
    Way way;
    std::optional<TabItem> tab;  // coming or going: enough to put the window back
    bool isTouched = false;      // the window may be hidden
  };

  // A window's place in the ledger, given up when the claim ends.
  class [[nodiscard]] Claim {
   public:
    Claim(Claim&& other) noexcept;
    Claim& operator=(Claim&&) = delete;
    ~Claim();

    void setTab(TabItem tab) { entry_->tab = std::move(tab); }
    // Call before the window is hidden.
    void touch() { entry_->isTouched = true; }

    // The tab that was set.
    TabItem& tab() { return *entry_->tab; }
    const TabItem& tab() const { return *entry_->tab; }

   private:
    friend Ledger;
    Claim(Ledger& ledger, std::list<Entry>::iterator entry) : ledger_(&ledger), entry_(entry) {}

    Ledger* ledger_;
    std::list<Entry>::iterator entry_;
  };

  Ledger() = default;
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;

  // A window that is about to leave.
  Claim claim(TargetWindow window);
  // The window of this tab, still hidden and about to come back.
  Claim claimBack(TabItem tab);

  bool contains(const TargetWindow& window) const;
  bool contains(const TargetWindow& window, Way way) const;
  // The latest of the windows that are about to come back.
  std::optional<TargetWindow> lastComingBack() const;
  // Whether some window of the application is about to come back.
  bool isComingBack(ProcessID pid) const;

  // In the order claimed.
  const std::list<Entry>& entries() const { return entries_; }

 private:
  std::list<Entry> entries_;
};

}  // namespace pellow
