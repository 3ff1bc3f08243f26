#include "engine/destroyed_window_watcher.h"

#include "access/ax.h"

namespace pellow {

void DestroyedWindowWatcher::watch(const std::vector<TabItem>& tabs) {
  ++round_;
  for (const auto& tab : tabs) {
    const auto [known, isNew] = watched_.try_emplace(tab.id);
    if (isNew) known->second.observer = observe(tab);
    known->second.round = round_;
  }
  if (watched_.size() == tabs.size()) return;
  std::erase_if(watched_, [this](const auto& entry) { return entry.second.round != round_; });
}

Subscription DestroyedWindowWatcher::observe(const TabItem& tab) {
  // On the main thread, so an application that hangs may not take its time.
  auto observer = accessibility_.observe(
      tab.window.element, AX::notification::elementDestroyed,
      [this, id = tab.id](const AXElement&) { onDestroyed(id); }, AX::timeout::application);
  if (observer) return std::move(*observer);
  // The window may be gone already; a platform that posts no such notification leaves the tab to
  // the next restore, which finds out.
  if (observer.error() != AXError::invalidUIElement) return Subscription();
  return mainQueue_.async([this, id = tab.id] { onDestroyed(id); });
}

}  // namespace pellow
