#include "tests/random/sightings.h"

#include <algorithm>
#include <cmath>
#include <ranges>
#include <utility>

#include <fmt/format.h>

#include "access/ax.h"

namespace pellow::random {
namespace {

using simulated::DesktopState;
using simulated::WindowID;
using simulated::WindowState;

constexpr double matchDistance = 4;
constexpr Seconds timeToBeKnown = 3;  // a new application, to the program

bool answersInTime(const DesktopState& desktop, const WindowState& window) {
  const auto& application = *desktop.application(window.pid);
  const auto delay =
      window.manners.answersAfter + application.answersAfter + desktop.longestExtraDelay;
  return !application.hangs && delay < AX::timeout::windowChange;
}

bool callsMayFail(const DesktopState& desktop, const WindowState& window) {
  return !desktop.trustsProcess || desktop.faultProbability > 0 || !window.manners.faults.empty();
}

bool movesAsItPleases(const WindowState& window) {
  const auto& manners = window.manners;
  return manners.refusesToMove || manners.clampsToDisplay || manners.gridStep > 0 || manners.moves;
}

bool isStandard(const DesktopState& desktop, const WindowState& window) {
  return window.subrole == AX::subrole::standardWindow &&
         desktop.application(window.pid)->identity.activationPolicy == ActivationPolicy::regular;
}

bool haveSameFrames(const std::vector<Screen>& some, const std::vector<Screen>& others) {
  return std::ranges::equal(some, others, {}, &Screen::frame, &Screen::frame);
}

}  // namespace

std::string nameOf(const DesktopState& desktop, const WindowState& window) {
  const auto* application = desktop.application(window.pid);
  return fmt::format("window {} \"{}\" of {}", window.id, window.title,
                     application ? application->identity.localizedName : "nobody");
}

bool isTroubled(const DesktopState& desktop, const WindowState& window) {
  return !answersInTime(desktop, window) || callsMayFail(desktop, window) ||
         movesAsItPleases(window);
}

const Sighting* Sightings::window(WindowID id) const {
  const auto found = windows_.find(id);
  return found == windows_.end() ? nullptr : &found->second;
}

std::vector<ProcessID> Sightings::hiddenApplications() const {
  std::vector<ProcessID> pids;
  for (const auto& [pid, doer] : hiddenApplications_)
    if (doer == Doer::program) pids.push_back(pid);
  return pids;
}

bool Sightings::mayBeUnwatched(ProcessID pid) const {
  const auto found = watches_.find(pid);
  return found == watches_.end() || found->second.mayBeRefused;
}

void Sightings::lookAtApplications(const DesktopState& desktop, Seconds now, Doer doer) {
  std::erase_if(hiddenApplications_, [&](const auto& entry) {
    const auto* application = desktop.application(entry.first);
    return !application || !application->hidden;
  });
  for (const auto& application : desktop.applications) {
    const auto pid = application.identity.pid;
    if (application.hidden) hiddenApplications_.try_emplace(pid, doer);
    auto& watch = watches_.try_emplace(pid, Watch{.since = now}).first->second;
    const bool isNew = now < watch.since + timeToBeKnown;
    if (application.refusesObservers || !desktop.trustsProcess || desktop.faultProbability > 0 ||
        (isNew && application.hangs))
      watch.mayBeRefused = true;
  }
}

// Whoever waits for one that closed without an answer waits as long for its application.
void Sightings::forgetClosed(const DesktopState& desktop) {
  std::set<ProcessID> troubled;
  std::erase_if(windows_, [&](const auto& entry) {
    const auto& [id, seen] = entry;
    const bool isClosed = !desktop.window(id);
    if (isClosed && seen.wasTroubledAtTheEnd) troubled.insert(seen.pid);
    return isClosed;
  });
  for (auto& window : windows_ | std::views::values)
    if (troubled.contains(window.pid)) window.wasTroubled = window.wasTroubledAtTheEnd = true;
}

void Sightings::look(const DesktopState& desktop, Seconds now, Doer doer, const IsAway& isAway) {
  forgetClosed(desktop);
  lookAtApplications(desktop, now, doer);
  if (desktop.frontmost) wereFrontmost_.insert(*desktop.frontmost);

  const bool displaysChanged = !haveSameFrames(screens_, desktop.screens);
  if (displaysChanged) screens_ = desktop.screens;
  for (const auto& window : desktop.windows) {
    const bool away = isAway(window.id);
    lookAtWindow(desktop, window, doer, away);
    auto& seen = windows_.at(window.id);
    if (displaysChanged && (away || seen.frame != seen.home)) seen.homeIsCertain = false;
  }
}

void Sightings::lookAtWindow(const DesktopState& desktop, const WindowState& window, Doer doer,
                             bool isAway) {
  const auto [found, isNew] = windows_.try_emplace(window.id);
  auto& seen = found->second;
  if (isNew) seen = {.pid = window.pid, .frame = window.frame, .home = window.frame};
  const auto before = seen;

  if (window.lateChanges != seen.lateChanges) {
    seen.lateChanges = window.lateChanges;
    seen.wasTroubledSinceLate = askedBefore_.contains(window.id);
    doer = Doer::late;
  }
  // Without a display the difference cannot be seen.
  const bool isOffscreen = desktop.screens.empty()
                               ? seen.isOffscreen && window.frame == seen.frame
                               : desktop.shareOnDisplays(window.frame) <= hiddenShare;
  if (window.minimized && !seen.isMinimized) seen.minimizedBy = doer;
  const bool wasPutThere = doer != Doer::program && window.frame != seen.frame;
  if (isOffscreen && (!seen.isOffscreen || wasPutThere)) seen.movedOffBy = doer;
  seen.isMinimized = window.minimized;
  seen.isOffscreen = isOffscreen;
  if (doer == Doer::others && window.frame != seen.frame) {
    if (isAway || seen.isStranded) {
      seen.homeIsCertain = false;
    } else {
      seen.home = window.frame;
    }
    seen.isStranded = seen.isStranded && !wasPutThere;
  }
  seen.frame = window.frame;

  // Somebody found it where it was, and puts it away again.
  if (isAway && std::exchange(seen.isStranded, false)) {
    seen.movedOffBy = Doer::others;
    seen.homeIsCertain = false;
  }
  if (isTroubled(desktop, window)) {
    seen.wasTroubled = seen.wasTroubledAtTheEnd = seen.wasTroubledSinceLate = true;
    if (isAway) seen.mayBeUnwatched = true;
  }
  if (wereFrontmost_.contains(window.pid) &&
      desktop.application(window.pid)->focusedWindow == window.id)
    seen.wasInHand = true;
  if (doer == Doer::others && seen.isMinimized != before.isMinimized) seen.wasInHand = true;
  if (seen.frame == before.frame && seen.isMinimized == before.isMinimized && !isNew) return;
  if (doer == Doer::program && !isNew) judge(desktop, window, before);
  if (doer == Doer::program && !isNew && window.frame.size != before.frame.size)
    misdeed_ = fmt::format("{} has another size than before", nameOf(desktop, window));
}

void Sightings::judge(const DesktopState& desktop, const WindowState& window,
                      const Sighting& before) {
  if (before.wasInHand || before.isStranded || isStandard(desktop, window)) return;
  misdeed_ = fmt::format(
      "{}, no window of an ordinary kind, was moved or minimized though nobody "
      "asked for it",
      nameOf(desktop, window));
}

void Sightings::beginsToEnd() {
  for (auto& window : windows_ | std::views::values) window.wasTroubledAtTheEnd = false;
}

void Sightings::forgive() {
  for (auto& window : windows_ | std::views::values) {
    window.minimizedBy = window.movedOffBy = Doer::others;
    window.isStranded = window.waitsForNextLaunch = false;
  }
  for (auto& doer : hiddenApplications_ | std::views::values) doer = Doer::others;
}

void Sightings::isLeftWith(const std::vector<ParkingRecord>& records, const DesktopState& desktop) {
  const auto before = windows_;
  forgive();
  std::map<std::pair<std::string, std::string>, int> sameTitle;
  std::vector<std::pair<Sighting*, std::string>> stranded;
  for (auto& [id, seen] : windows_) {
    const auto& earlier = before.at(id);
    const auto& window = *desktop.window(id);
    const auto& bundleID = desktop.application(window.pid)->identity.bundleID;
    const bool hasRecord = std::ranges::any_of(records, [&](const ParkingRecord& record) {
      return record.bundleID == bundleID &&
             std::abs(record.parkedOrigin.x - seen.frame.minX()) <= matchDistance &&
             std::abs(record.parkedOrigin.y - seen.frame.minY()) <= matchDistance;
    });
    if (!hasRecord) continue;
    seen.wasInHand = true;
    if (!seen.isOffscreen || earlier.movedOffBy != Doer::program) continue;
    seen.movedOffBy = Doer::program;
    seen.isStranded = true;
    seen.homeIsCertain = earlier.homeIsCertain && !earlier.isStranded && !earlier.wasTroubled;
    const bool isNamedSo = std::ranges::any_of(records, [&](const ParkingRecord& record) {
      return record.bundleID == bundleID && record.title == window.title;
    });
    if (++sameTitle[{*bundleID, window.title}] > 1 || !isNamedSo) sameTitle[{*bundleID, ""}] = 2;
    stranded.emplace_back(&seen, *bundleID);
  }
  for (const auto& [seen, bundleID] : stranded)
    if (sameTitle[{bundleID, ""}] > 1 || std::ssize(records) > std::ssize(stranded))
      seen->homeIsCertain = false;
}

void Sightings::launches(const DesktopState& desktop) {
  watches_.clear();
  askedBefore_.clear();
  for (const auto& late : desktop.lateWrites) askedBefore_.insert(late.window);
  for (auto& window : windows_ | std::views::values) {
    if (window.isOffscreen && !window.isStranded) window.homeIsCertain = false;
    window.waitsForNextLaunch = false;
    if (window.isStranded) window.wasTroubled = false;
  }
}

void Sightings::settled(const DesktopState& desktop, const IsAway& isAway) {
  wereFrontmost_.clear();
  for (auto& [id, seen] : windows_) {
    const auto* window = desktop.window(id);
    if (!window || isAway(id)) continue;
    seen.wasInHand = desktop.focusedWindow() == id || (seen.wasInHand && seen.isOffscreen);
    if (seen.isStranded && seen.isHiddenByProgram()) {
      seen.waitsForNextLaunch = true;
      continue;
    }
    seen.isStranded = false;
    seen.home = seen.frame;
    seen.homeIsCertain = true;
    seen.mayBeUnwatched = false;
    seen.wasTroubled = isTroubled(desktop, *window);
  }
}

void Sightings::renamed(ProcessID pid) {
  for (auto& window : windows_ | std::views::values)
    if (window.pid == pid && window.isStranded) window.homeIsCertain = false;
}

}  // namespace pellow::random
