#include "engine/destroyed_window_watcher.h"

#include <utility>

#include "access/ax.h"

namespace pellow {

void DestroyedWindowWatcher::watch(const std::vector<TabItem>& tabs) {
  ++round_;
  for (const auto& tab : tabs) {
    const auto [known, isNew] = watched_.try_emplace(tab.id);
    known->second.round = round_;
    if (isNew) tasks_.start(observe(tab.id, tab.window.element));
  }
  if (watched_.size() == tabs.size()) return;
  std::erase_if(watched_, [this](const auto& entry) { return entry.second.round != round_; });
}

Task<> DestroyedWindowWatcher::observe(UUID tab, AXElement window) {
  auto observer = co_await axQueue_.ax([&] {
    return accessibility_.observe(
        window, AX::notification::elementDestroyed,
        [this, tab](const AXElement&) { onDestroyed(tab); }, AX::timeout::application);
  });
  const auto watched = watched_.find(tab);
  if (watched == watched_.end()) co_return;
  if (observer) watched->second.observer = std::move(*observer);
  // The window may be gone already. Where the platform posts no such notification, the next restore
  // finds out.
  else if (observer.error() == AXError::invalidUIElement)
    onDestroyed(tab);
}

}  // namespace pellow
