#include "engine/late_minimizes.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace pellow {
namespace {

constexpr std::size_t expectedAtMost = 64;

}  // namespace

void LateMinimizes::expect(const TabItem& tab) {
  forget(tab.window);
  tabs_.push_back(tab);
  if (tabs_.size() > expectedAtMost) tabs_.erase(tabs_.begin());
}

std::optional<TabItem> LateMinimizes::take(const TargetWindow& window) {
  const auto found = std::ranges::find(tabs_, window, &TabItem::window);
  if (found == tabs_.end()) return std::nullopt;
  auto tab = std::move(*found);
  tabs_.erase(found);
  return tab;
}

}  // namespace pellow
