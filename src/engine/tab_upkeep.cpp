#include "engine/tab_upkeep.h"

#include <set>
#include <utility>

namespace pellow {

TabUpkeep::TabUpkeep(const Surroundings& surroundings)
    : around_(surroundings),
      destroyedWindows_(around_.axQueue, around_.tasks, around_.accessibility) {
  destroyedWindows_.onDestroyed = [this](UUID tab) { windowMayBeGone(tab); };
}

void TabUpkeep::start() {
  // Not at once: while tabs come one after another, the next window must not wait for it.
  following_ = around_.notifications.observe(TabStore::didChange, [this] {
    soon_ = around_.mainQueue.async([this] { tabsDidChange(); });
  });
}

void TabUpkeep::tabsDidChange() {
  destroyedWindows_.watch(around_.tabs.tabs());
  around_.parkedWindows.dropStaleRecords();
}

// The window was announced as gone, but may only have been ordered out.
void TabUpkeep::windowMayBeGone(UUID id) {
  if (const auto* const tab = around_.tabs.tab(id)) around_.tasks.start(pruneDead({*tab}));
}

// An application that does not answer is asked only once.
Task<> TabUpkeep::pruneDead(std::vector<TabItem> tabs) {
  const auto dead = co_await around_.axQueue.ax([&] {
    std::vector<UUID> ids;
    std::set<ProcessID> silent;
    for (const auto& tab : tabs) {
      if (tab.standsForApp() || silent.contains(tab.window.pid)) continue;
      const auto isGone = tab.window.isGone();
      if (!isGone) silent.insert(tab.window.pid);
      if (isGone.value_or(false)) ids.push_back(tab.id);
    }
    return ids;
  });
  around_.tabs.pruneDead(dead);
}

}  // namespace pellow
