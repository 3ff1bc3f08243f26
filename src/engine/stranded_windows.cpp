#include "engine/stranded_windows.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "access/ax.h"
#include "base/scoped_flag.h"

namespace pellow {
namespace {

constexpr double matchDistance = 4;
constexpr Seconds pollInterval = 5;
constexpr Seconds busyInterval = 1;

// A window parked without a display did not move, and any other may be there now.
bool isParkedAt(const QuartzRect& frame, const ParkingRecord& record) {
  return record.parkedOrigin != record.originalOrigin &&
         std::abs(frame.minX() - record.parkedOrigin.x) <= matchDistance &&
         std::abs(frame.minY() - record.parkedOrigin.y) <= matchDistance;
}

}  // namespace

// Windows of every kind, as any focused window can be parked. The first that does not answer stands
// for its whole process.
StrandedWindows::Candidates StrandedWindows::gather(Accessibility& accessibility,
                                                    const std::vector<ProcessID>& pids,
                                                    Seconds timeout) {
  Candidates candidates;
  for (const auto pid : pids) {
    const auto windows = TargetWindow::everyWindow(accessibility, pid, timeout);
    if (!windows) {
      if (windows.error() == AXError::cannotComplete) candidates.silent.insert(pid);
      continue;
    }
    for (const auto& window : *windows) {
      const auto state = window.state(timeout);
      if (state.frame) candidates.found.push_back({window, state.title, *state.frame});
      if (state.answers) continue;
      candidates.silent.insert(pid);
      break;
    }
  }
  return candidates;
}

// If several windows were parked at one place, the title tells which is which; a window whose title
// has changed takes a record that is left.
StrandedWindows::Pairing StrandedWindows::pair(std::vector<Candidate> windows,
                                               std::vector<ParkingRecord> records) {
  Pairing pairing;
  const auto pairWhere = [&](auto accepts) {
    std::erase_if(windows, [&](const Candidate& candidate) {
      const auto found = std::ranges::find_if(records, [&](const ParkingRecord& record) {
        return isParkedAt(candidate.frame, record) && accepts(candidate, record);
      });
      if (found == records.end()) return false;
      pairing.matches.push_back({candidate, *found});
      records.erase(found);
      return true;
    });
  };
  pairWhere([](const Candidate& candidate, const ParkingRecord& record) {
    return candidate.title == record.title;
  });
  pairWhere([](const Candidate&, const ParkingRecord&) { return true; });
  // A window with no record left was parked there, too.
  for (const auto& candidate : windows) {
    const auto beside = std::ranges::find_if(pairing.matches, [&](const Match& match) {
      return isParkedAt(candidate.frame, match.record);
    });
    if (beside != pairing.matches.end())
      pairing.matches.push_back({candidate, beside->record, /*isShared=*/true});
  }
  pairing.unmatched = std::move(records);
  return pairing;
}

int StrandedWindows::recoverStrandedWindows() {
  std::map<std::string, std::vector<ParkingRecord>> byApplication;
  for (const auto& record : around_.journal.records())
    byApplication[record.bundleID].push_back(record);
  if (byApplication.empty()) return 0;

  int recovered = 0;
  std::vector<ParkingRecord> unmatched;
  for (const auto& [bundleID, records] : byApplication) {
    const auto pids = processes(bundleID);
    auto [found, silent] = gather(around_.accessibility, pids, AX::timeout::application);
    const auto pairing = pair(std::move(found), records);
    const bool mayBeFound = !silent.empty() || haveWindowsOnOtherSpaces(pids);
    for (const auto& record : pairing.unmatched)
      mayBeFound ? around_.journal.keep(record) : unmatched.push_back(record);
    for (const auto& match : pairing.matches) {
      const auto pid = match.candidate.window.pid;
      const auto outcome = silent.contains(pid) ? Outcome::unanswered : recover(match);
      if (outcome == Outcome::unanswered) silent.insert(pid);
      recovered += outcome == Outcome::back;
      if (!match.isShared && outcome != Outcome::back && outcome != Outcome::gone)
        around_.journal.keep(match.record);
    }
    if (!silent.empty()) silent_.insert(bundleID);
  }
  around_.journal.write(unmatched);
  if (unmatched.empty()) return recovered;

  around_.log.standard("{} parked window(s) could not be matched; sweeping for hidden windows",
                       unmatched.size());
  recovered += rescueHiddenWindows(false);
  around_.journal.write({});
  return recovered;
}

StrandedWindows::Outcome StrandedWindows::recover(const Match& match) {
  const auto origin = home(match);
  return outcome(match, move(match.candidate.window, origin, AX::timeout::application));
}

QuartzPoint StrandedWindows::home(const Match& match) const {
  return around_.places.restoreOrigin({match.record.originalOrigin, match.candidate.frame.size},
                                      around_.log);
}

StrandedWindows::Moved StrandedWindows::move(const TargetWindow& window, QuartzPoint origin,
                                             Seconds timeout) const {
  try {
    return window.move(origin, Verify::yes, around_.clock, timeout);
  } catch (const PellowError& error) {
    return std::unexpected(error);
  }
}

// A window still out of sight has not come back.
StrandedWindows::Moved StrandedWindows::inSight(Moved moved, Size size) const {
  if (!moved || !around_.displays.isHidden({*moved, size})) return moved;
  return std::unexpected(PellowError::moveFailed(AXError::failure));
}

StrandedWindows::Outcome StrandedWindows::outcome(const Match& match, Moved moved) const {
  const auto& [window, title, frame] = match.candidate;
  moved = inSight(std::move(moved), frame.size);
  if (moved) {
    around_.log.standard("Recovered stranded window: {}", title);
    return Outcome::back;
  }
  const auto& error = moved.error();
  around_.log.error("Could not recover {}: {}", title, error.errorDescription());
  if (error.isWindowGone()) return Outcome::gone;
  return error.axError() == AXError::cannotComplete ? Outcome::unanswered : Outcome::refused;
}

void StrandedWindows::start() {
  if (around_.journal.kept().empty()) return;
  subscriptions_.push_back(around_.workspace.onDidActivateApplication([this](ProcessID pid) {
    const auto application = around_.workspace.application(pid);
    if (application && application->bundleID)
      lookAgain(AX::timeout::windowChange, application->bundleID);
  }));
  const auto lookAtAll = [this] { lookAtAllAgain(); };
  subscriptions_.push_back(
      around_.workspace.onDidTerminateApplication([lookAtAll](ProcessID) { lookAtAll(); }));
  subscriptions_.push_back(around_.screens.onDidChangeParameters(lookAtAll));
  subscriptions_.push_back(around_.workspace.onDidChangeActiveSpace(lookAtAll));
  lookAgain(AX::timeout::windowChange);
}

void StrandedWindows::lookAtAllAgain() { lookAgain(AX::timeout::application); }

void StrandedWindows::lookAgain(Seconds timeout, std::optional<std::string> onlyBundleID) {
  if (around_.journal.kept().empty()) return;
  if (isLooking_)
    looksOnceMore_ = true;
  else
    around_.tasks.start(recoverLate(timeout, std::move(onlyBundleID)));
}

Task<> StrandedWindows::recoverLate(Seconds timeout, std::optional<std::string> onlyBundleID) {
  const ScopedFlag looking(isLooking_);
  do {
    std::map<std::string, std::vector<ParkingRecord>> byApplication;
    for (const auto& record : around_.journal.kept())
      if (record.bundleID == onlyBundleID.value_or(record.bundleID))
        byApplication[record.bundleID].push_back(record);
    for (const auto& [bundleID, records] : byApplication)
      co_await recoverLate(timeout, bundleID, records);
    timeout = AX::timeout::application;
    onlyBundleID.reset();
  } while (std::exchange(looksOnceMore_, false));
  if (silent_.empty())
    poll_.cancel();
  else if (!poll_)
    poll_ = around_.mainQueue.every(pollInterval, [this] { lookAtAllAgain(); });
}

Task<> StrandedWindows::recoverLate(Seconds timeout, std::string bundleID,
                                    std::vector<ParkingRecord> records) {
  const auto pids = processes(bundleID);
  auto candidates =
      co_await around_.axQueue.ax([&] { return gather(around_.accessibility, pids, timeout); });
  auto& [found, silent] = candidates;
  bool isBusy = false;  // what becomes of a window that is under way is not certain yet
  std::erase_if(found, [&](const Candidate& candidate) {
    const auto& window = candidate.window;
    isBusy |= around_.ledger.contains(window);
    return silent.contains(window.pid) || around_.ledger.contains(window) ||
           around_.tabs.contains(window);
  });
  const auto pairing = pair(std::move(found), std::move(records));
  for (const auto& match : pairing.matches) {
    const auto& window = match.candidate.window;
    // While others came back, somebody may have turned to this one.
    if (around_.ledger.contains(window) || around_.tabs.contains(window)) {
      isBusy = true;
      continue;
    }
    const auto claim = around_.ledger.claim(window);
    const auto origin = home(match);
    auto moved = co_await around_.axQueue.ax(
        [&] { return move(window, origin, AX::timeout::windowChange); });
    const auto done = outcome(match, std::move(moved));
    if (done == Outcome::unanswered) silent.insert(window.pid);
    if (done == Outcome::back || done == Outcome::gone) around_.journal.release(match.record);
  }
  if (silent.empty())
    silent_.erase(bundleID);
  else
    silent_.insert(bundleID);
  if (isBusy) soon_ = around_.mainQueue.after(busyInterval, [this] { lookAtAllAgain(); });
  if (isBusy || !silent.empty() || haveWindowsOnOtherSpaces(pids)) co_return;
  for (const auto& record : pairing.unmatched) around_.journal.release(record);
}

bool StrandedWindows::haveWindowsOnOtherSpaces(const std::vector<ProcessID>& pids) const {
  return std::ranges::any_of(
      pids, [this](ProcessID pid) { return around_.workspace.hasWindowsOnOtherSpaces(pid); });
}

int StrandedWindows::rescueHiddenWindows(bool clearJournal) {
  int rescued = 0;
  for (const auto& application : around_.workspace.runningApplications()) {
    if (application.activationPolicy != ActivationPolicy::regular) continue;
    if (application.pid != around_.ownProcess)
      rescued += rescueHiddenWindows(application, clearJournal);
  }
  if (clearJournal) around_.journal.clear();
  return rescued;
}

// Whether a record that is kept will bring the window home, and not merely onto a display.
bool StrandedWindows::comesHome(const RunningApplication& application,
                                const QuartzRect& frame) const {
  return std::ranges::any_of(around_.journal.kept(), [&](const ParkingRecord& record) {
    return record.bundleID == application.bundleID && isParkedAt(frame, record);
  });
}

int StrandedWindows::rescueHiddenWindows(const RunningApplication& application,
                                         bool alsoThoseWithRecords) {
  constexpr auto timeout = AX::timeout::application;
  int rescued = 0;
  for (const auto& window :
       TargetWindow::windows(around_.accessibility, application.pid, timeout)) {
    const auto state = window.state(timeout);
    if (!state.answers) break;
    if (state.isMinimized || !state.frame || !around_.displays.isHidden(*state.frame)) continue;
    if (!alsoThoseWithRecords && comesHome(application, *state.frame)) continue;
    const auto origin = around_.places.onScreenOrigin(*state.frame);
    if (!origin) continue;
    const auto moved = inSight(move(window, *origin, timeout), state.frame->size);
    if (moved) {
      ++rescued;
      around_.log.standard("Rescued off-screen window from {}", application.localizedName);
    } else {
      around_.log.error("Could not rescue window from {}: {}", application.localizedName,
                        moved.error().errorDescription());
    }
    if (moved == std::unexpected(PellowError::moveFailed(AXError::cannotComplete))) break;
  }
  return rescued;
}

std::vector<ProcessID> StrandedWindows::processes(const std::string& bundleID) const {
  std::vector<ProcessID> pids;
  for (const auto& application : around_.workspace.runningApplications())
    if (application.bundleID == bundleID) pids.push_back(application.pid);
  return pids;
}

}  // namespace pellow
