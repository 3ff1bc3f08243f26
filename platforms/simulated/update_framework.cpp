#include "platforms/simulated/update_framework.h"

#include <functional>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "platforms/simulated/process.h"

namespace pellow::simulated {
namespace {

constexpr Seconds betweenChecks = 24 * 60 * 60;

// A delegate may lack any member, and a member may replace its delegate.
template <class... Args>
void tell(std::function<void(Args...)> member, std::type_identity_t<Args>... args) {
  if (member) member(args...);
}

}  // namespace

void UpdateFramework::start(UpdateDelegate delegate) {
  delegate_ = std::move(delegate);
  started_ = system_.scheduler.now();
  plan();
}

void UpdateFramework::checkForUpdates() {
  if (!delegate_ || !system_.portCall("looks for updates")) return;
  system_.mainLoop.post([this] { tellUser(); });
}

void UpdateFramework::setAutomaticallyChecks(bool automatically) {
  if (!system_.portCall("{} the schedule of updates", automatically ? "begins" : "ends")) return;
  system_.state.updates.checksAutomatically = automatically;
  plan();
}

std::optional<Seconds> UpdateFramework::sinceLastCheck() const {
  const auto& last = system_.state.updates.lastCheck;
  return last ? std::optional(system_.scheduler.now() - *last) : std::nullopt;
}

void UpdateFramework::checkBySchedule() {
  system_.mainLoop.post([this] {
    if (!delegate_ || !automaticallyChecks()) return;
    if (const auto found = check()) tell(delegate_->willShowUpdate, false, *found);
  });
}

std::optional<std::string> UpdateFramework::windowText() const {
  if (!showsWindow_ || !system_.processRuns()) return std::nullopt;
  if (!shownVersion_) return "You have the newest version of Pellow.";
  return fmt::format("Pellow {} is available.", *shownVersion_);
}

void UpdateFramework::closeWindow() {
  if (!windowText()) throw std::out_of_range("no window about updates shows");
  showsWindow_ = false;
}

void UpdateFramework::install() {
  if (!windowText() || !shownVersion_) throw std::out_of_range("no update shows");
  showsWindow_ = false;
  system_.mainLoop.post([this, version = *shownVersion_] {
    tell(delegate_->willRelaunchApplication);
    if (!system_.processRuns()) return;
    system_.state.updates.installed = version;
    process_.terminate();
  });
}

// The version that is newer than the installed one, if there is one.
std::optional<std::string> UpdateFramework::check() {
  auto& updates = system_.state.updates;
  updates.lastCheck = system_.scheduler.now();
  plan();
  return updates.published == updates.installed ? std::nullopt : updates.published;
}

void UpdateFramework::tellUser() {
  shownVersion_ = check();
  if (shownVersion_) tell(delegate_->willShowUpdate, true, *shownVersion_);
  showsWindow_ = true;
  if (shownVersion_) tell(delegate_->didReceiveUserAttention);
}

void UpdateFramework::plan() {
  nextCheck_.cancel();
  if (!delegate_ || !automaticallyChecks()) return;
  const auto due = system_.state.updates.lastCheck.value_or(started_) + betweenChecks;
  nextCheck_ = system_.mainLoop.after(due - system_.scheduler.now(), [this] { checkBySchedule(); });
}

}  // namespace pellow::simulated
