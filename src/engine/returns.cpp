#include "engine/returns.h"

#include <algorithm>
#include <set>
#include <unordered_set>
#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

constexpr Seconds restoreBatchExtra = 1.5;
constexpr int putBacksAtMost = 3;
constexpr Seconds slowAtLeast = 1;  // for the others, when one has taken all the time

}  // namespace

void Returns::restore(const std::vector<UUID>& ids) {
  const std::unordered_set<UUID> asked(ids.begin(), ids.end());
  const auto frames = around_.flights.tabFrames(ids);
  std::list<Return> returns;
  for (const auto& tab : around_.tabs.tabs()) {
    if (!asked.contains(tab.id)) continue;
    const auto frame = frames.find(tab.id);
    returns.push_back({around_.ledger.claimBack(tab),
                       frame == frames.end() ? std::nullopt : std::optional(frame->second)});
  }
  if (returns.empty()) return;
  around_.tabs.remove(ids);
  around_.tasks.start(restoreBatch(std::move(returns)));
}

// As windows come back, their applications become active one after another; that must not bring
// back more.
Task<> Returns::restoreBatch(std::list<Return> returns) {
  around_.echoes.suppressActivation(around_.preferences.animationDuration() *
                                        static_cast<double>(returns.size()) +
                                    restoreBatchExtra);
  std::vector<PellowError> failures;
  while (!returns.empty()) {
    try {
      co_await restore(returns.front());
    } catch (const PellowError& error) {
      failures.push_back(error);
    }
    returns.pop_front();
    if (onArrived) onArrived();
  }
  around_.echoes.suppressActivation(EchoGuard::ownEcho);
  around_.failures.report(failures);
  co_await around_.upkeep.pruneDead();
}

Task<> Returns::restore(const Return& each) {
  const auto& tab = each.claim.tab();
  std::optional<PellowError> failure;
  try {
    // An application that is merely slow still has its window.
    if (!tab.standsForApp() &&
        co_await around_.axQueue.ax([&] { return tab.window.isGone().value_or(false); }))
      throw PellowError::windowGone();
    if (each.tabFrame) around_.flights.flyBack(tab, *each.tabFrame);
    co_await around_.mechanisms.reveal(tab);
  } catch (const PellowError& error) {
    failure = error;
  }
  if (!failure) co_return;

  if (failure->isWindowGone()) {
    around_.log.standard("Dropping tab whose window no longer exists");
    around_.parkedWindows.forget(tab);
    co_return;
  }
  around_.tabs.add(tab);
  throw PellowError(*failure);
}

void Returns::restoreAllBlocking() {
  for (const auto& [tab, reason] : endAllAndPutBack())
    if (reason == AXError::cannotComplete) around_.parkedWindows.keepForNextLaunch(tab);

  std::vector<UUID> ids;
  for (const auto& tab : around_.tabs.tabs()) ids.push_back(tab.id);
  around_.tabs.remove(ids);
  around_.journal.write({});
}

// A late minimize gets its tab when it comes.
void Returns::restoreAllAndGoOn() {
  const auto& late = around_.lateMinimizes.tabs();
  std::unordered_set<UUID> away;
  for (const auto& [tab, reason] : endAllAndPutBack()) {
    const bool isLate = std::ranges::find(late, tab.id, &TabItem::id) != late.end();
    if (isLate || reason == AXError::invalidUIElement) continue;
    away.insert(tab.id);
    if (!around_.tabs.tab(tab.id)) around_.tabs.add(tab);
  }
  std::vector<UUID> back;
  for (const auto& tab : around_.tabs.tabs())
    if (!away.contains(tab.id)) back.push_back(tab.id);
  around_.tabs.remove(back);
  around_.parkedWindows.dropStaleRecords();
}

std::vector<Returns::Missing> Returns::endAllAndPutBack() {
  const auto start = around_.clock.now();
  const auto screens = around_.screens.all();
  auto rest = underWay();
  std::vector<Missing> missing;
  around_.axQueue.dropCallsAnd([&] {
    missing = putBackAll(around_.tabs.tabs());
    around_.tasks.cancel();
  });
  if (around_.screens.all() != screens) {
    missing.clear();
    rest.insert(rest.end(), around_.tabs.tabs().begin(), around_.tabs.tabs().end());
  }
  const auto more = putBackAll(rest);
  missing.insert(missing.end(), more.begin(), more.end());
  std::vector<TabItem> slow;
  std::erase_if(missing, [&](const Missing& each) {
    if (each.reason != AXError::cannotComplete) return false;
    slow.push_back(each.tab);
    return true;
  });
  const auto left = AX::timeout::windowChange - (around_.clock.now() - start);
  const auto stuck = putBack(slow, std::max(left, slowAtLeast));
  missing.insert(missing.end(), stuck.begin(), stuck.end());
  return missing;
}

std::vector<TabItem> Returns::underWay() const {
  auto tabs = around_.lateMinimizes.tabs();
  if (const auto& tab = around_.parkingUpkeep.moving()) tabs.push_back(*tab);
  for (const auto& entry : around_.ledger.entries())
    if (entry.isTouched) tabs.push_back(*entry.tab);
  return tabs;
}

// No change of the displays is announced while this blocks, and windows may answer slowly.
std::vector<Returns::Missing> Returns::putBackAll(const std::vector<TabItem>& tabs) {
  std::vector<Missing> missing;
  for (int attempt = 0; attempt < putBacksAtMost; ++attempt) {
    const auto screens = around_.screens.all();
    around_.displays.recordMainHeight();
    missing = putBack(tabs, AX::timeout::application);
    if (around_.screens.all() == screens) break;
  }
  return missing;
}

// Who only asks the system waits for nobody.
std::vector<Returns::Missing> Returns::putBack(const std::vector<TabItem>& tabs, Seconds timeout) {
  std::vector<Missing> missing;
  std::set<ProcessID> silent;
  for (const auto& tab : tabs) {
    const bool isSilent = tab.mechanism != Mechanism::hideApp && silent.contains(tab.window.pid);
    const auto done = isSilent ? std::unexpected(AXError::cannotComplete)
                               : around_.mechanisms.revealBlocking(tab, timeout);
    if (done) continue;
    if (done.error() == AXError::cannotComplete) silent.insert(tab.window.pid);
    missing.push_back({tab, done.error()});
  }
  return missing;
}

}  // namespace pellow
