#include "engine/destroyed_window_watcher.h"

#include <utility>

namespace pellow {

DestroyedWindowWatcher::DestroyedWindowWatcher(Accessibility& accessibility, MainQueue& mainQueue,
                                               std::function<void()> onDestroyed)
    : accessibility_(accessibility), mainQueue_(mainQueue), onDestroyed_(std::move(onDestroyed)) {}

void DestroyedWindowWatcher::watch(const std::vector<TabItem>& tabs) {
  auto before = std::exchange(observers_, {});
  for (const auto& tab : tabs) {
    const auto known = before.find(tab.id);
    observers_.emplace(tab.id, known == before.end() ? observe(tab) : std::move(known->second));
  }
}

Subscription DestroyedWindowWatcher::observe(const TabItem& tab) {
  auto observer = accessibility_.observe(tab.window.element, "AXUIElementDestroyed",
                                         [this](const AXElement&) { onDestroyed_(); });
  if (observer) return std::move(*observer);
  // The window may be gone already; a platform that posts no such notification leaves the tab to
  // the next restore, which finds out.
  if (observer.error() != AXError::invalidUIElement) return Subscription();
  return mainQueue_.async([this] { onDestroyed_(); });
}

}  // namespace pellow
