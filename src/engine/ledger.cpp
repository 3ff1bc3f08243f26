#include "engine/ledger.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace pellow {

Ledger::Claim::Claim(Claim&& other) noexcept
    : ledger_(std::exchange(other.ledger_, nullptr)), entry_(other.entry_) {}

Ledger::Claim::~Claim() {
  if (ledger_) ledger_->entries_.erase(entry_);
}

Ledger::Claim Ledger::claim(TargetWindow window) {
  return {*this, entries_.insert(entries_.end(), {std::move(window), Way::away})};
}

Ledger::Claim Ledger::claimBack(TabItem tab) {
  Entry entry{.window = tab.window, .way = Way::back, .tab = std::move(tab), .isTouched = true};
  return {*this, entries_.insert(entries_.end(), std::move(entry))};
}

bool Ledger::contains(const TargetWindow& window) const {
  return contains(window, Way::away) || contains(window, Way::back);
}

bool Ledger::contains(const TargetWindow& window, Way way) const {
  return std::ranges::any_of(
      entries_, [&](const Entry& entry) { return entry.way == way && entry.window == window; });
}

std::optional<TargetWindow> Ledger::lastComingBack() const {
  for (const auto& entry : entries_ | std::views::reverse)
    if (entry.way == Way::back) return entry.window;
  return std::nullopt;
}

bool Ledger::isComingBack(ProcessID pid) const {
  return std::ranges::any_of(entries_, [pid](const Entry& entry) {
    return entry.way == Way::back && entry.window.pid == pid;
  });
}

}  // namespace pellow
