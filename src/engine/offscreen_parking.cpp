#include "engine/offscreen_parking.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "access/ax.h"
#include "access/pellow_error.h"
#include "access/target_window.h"

namespace pellow {
namespace {

constexpr double sliverWidth = 1;
constexpr double sliverHeight = 28;
constexpr double enoughToStay = 0.6;
constexpr double matchDistance = 4;

// A window that may be one of those that a previous run parked.
struct Candidate {
  TargetWindow window;
  std::string title;
  QuartzRect frame;
};

// A record of the journal and whether some window has taken it.
struct Pending {
  ParkingRecord record;
  bool matched = false;
};

// Without a display a window was put nowhere, and any other may stand there.
bool isParkedAt(const Candidate& candidate, const ParkingRecord& record) {
  return record.parkedOrigin != record.originalOrigin &&
         std::abs(candidate.frame.minX() - record.parkedOrigin.x) <= matchDistance &&
         std::abs(candidate.frame.minY() - record.parkedOrigin.y) <= matchDistance;
}

// Those of an application, of whatever processes.
struct Candidates {
  std::vector<Candidate> found;
  bool areAll = true;  // everybody who was asked has answered

  // Windows of every kind, as any focused window can be parked.
  void add(Accessibility& accessibility, ProcessID pid) {
    const auto windows = TargetWindow::everyWindow(accessibility, pid, AX::timeout::windowChange);
    if (!windows) {
      areAll = areAll && windows.error() != AXError::cannotComplete;
      return;
    }
    for (const auto& window : *windows) {
      const auto state = window.state();
      areAll = areAll && state.answers;
      if (state.frame) found.push_back({window, state.title, *state.frame});
    }
  }
};

// Pairs windows with records of their application. Where several windows were parked at one place,
// the title tells which is which; a window whose title changed meanwhile takes what is left.
//
// Calls `use(candidate, record)` for every pair.
template <class Use>
void pair(std::vector<Candidate> windows, std::vector<Pending>& pending,
          const std::string& bundleID, Use use) {
  const auto takeWhere = [&](auto accepts) {
    std::erase_if(windows, [&](const Candidate& candidate) {
      const auto found = std::ranges::find_if(pending, [&](const Pending& entry) {
        return entry.record.bundleID == bundleID && isParkedAt(candidate, entry.record) &&
               accepts(candidate, entry);
      });
      if (found == pending.end()) return false;
      found->matched = true;
      use(candidate, found->record);
      return true;
    });
  };
  takeWhere([](const Candidate& candidate, const Pending& entry) {
    return !entry.matched && candidate.title == entry.record.title;
  });
  takeWhere([](const Candidate&, const Pending& entry) { return !entry.matched; });
  takeWhere([](const Candidate&, const Pending&) { return true; });
}

}  // namespace

OffscreenParking::OffscreenParking(const Displays& displays, ParkingJournal& journal,
                                   Accessibility& accessibility, Workspace& workspace, Clock& clock,
                                   const Log& log, ProcessID ownProcess)
    : displays_(displays),
      journal_(journal),
      accessibility_(accessibility),
      workspace_(workspace),
      clock_(clock),
      log_(log),
      ownProcess_(ownProcess) {}

QuartzPoint OffscreenParking::parkOrigin(const QuartzRect& frame, StripEdge edge) const {
  const auto screens = displays_.frames();
  if (screens.empty()) return frame.origin;
  const auto y = [](const QuartzRect& screen) {
    return std::max(screen.minY(), screen.maxY() - sliverHeight);
  };
  if (edge == StripEdge::left) {
    const auto& leftmost = *std::ranges::min_element(screens, {}, &QuartzRect::minX);
    return {leftmost.minX() + sliverWidth - frame.width(), y(leftmost)};
  }
  const auto& rightmost = *std::ranges::max_element(screens, {}, &QuartzRect::maxX);
  return {rightmost.maxX() - sliverWidth, y(rightmost)};
}

QuartzPoint OffscreenParking::restoreOrigin(const QuartzRect& frame) const {
  if (displays_.visibleFraction(frame).value_or(0) >= enoughToStay) return frame.origin;
  log_.info("Original frame is no longer on a display; clamping the restore");
  return onScreenOrigin(frame).value_or(frame.origin);
}

std::optional<QuartzPoint> OffscreenParking::onScreenOrigin(const QuartzRect& frame) const {
  const auto visible = displays_.mainVisibleFrame();
  if (!visible) return std::nullopt;
  const auto lastX = std::max(visible->minX(), visible->maxX() - frame.width());
  const auto lastY = std::max(visible->minY(), visible->maxY() - frame.height());
  return QuartzPoint{std::min(lastX, std::max(frame.minX(), visible->minX())),
                     std::min(lastY, std::max(frame.minY(), visible->minY()))};
}

int OffscreenParking::recoverStrandedWindows() {
  std::vector<Pending> pending;
  std::map<std::string, Candidates> candidates;  // by bundle identifier
  for (const auto& record : journal_.records()) {
    candidates.try_emplace(record.bundleID);
    pending.push_back({record});
  }
  if (pending.empty()) return 0;

  int recovered = 0;
  const auto recover = [&](const Candidate& candidate, const ParkingRecord& record) {
    try {
      moveIntoSight(candidate.window, candidate.frame.size,
                    restoreOrigin({record.originalOrigin, candidate.frame.size}));
      ++recovered;
      log_.standard("Recovered stranded window: {}", candidate.title);
    } catch (const PellowError& error) {
      log_.error("Could not recover {}: {}", candidate.title, error.errorDescription());
    }
  };
  for (const auto& application : workspace_.runningApplications()) {
    const auto concerned = candidates.find(application.bundleID.value_or(""));
    if (application.bundleID && concerned != candidates.end())
      concerned->second.add(accessibility_, application.pid);
  }
  for (const auto& [bundleID, each] : candidates) pair(each.found, pending, bundleID, recover);

  std::vector<ParkingRecord> unmatched;
  for (const auto& entry : pending) {
    if (entry.matched) continue;
    if (candidates[entry.record.bundleID].areAll)
      unmatched.push_back(entry.record);
    else
      journal_.keepForNextLaunch(entry.record);
  }
  journal_.write(unmatched);
  if (unmatched.empty()) return recovered;

  log_.standard("{} parked window(s) could not be matched; sweeping for hidden windows",
                unmatched.size());
  recovered += rescueHiddenWindows(false);
  journal_.write({});
  return recovered;
}

int OffscreenParking::rescueHiddenWindows(bool clearJournal) {
  int rescued = 0;
  for (const auto& application : workspace_.runningApplications()) {
    if (application.activationPolicy != ActivationPolicy::regular) continue;
    if (application.pid == ownProcess_) continue;
    for (const auto& window : TargetWindow::windows(accessibility_, application.pid)) {
      if (AX::boolean(window.element, AX::attribute::minimized, AX::timeout::windowChange)
              .value_or(false))
        continue;
      const auto frame = AX::frame(window.element, AX::timeout::windowChange);
      if (!frame || !displays_.isHidden(*frame)) continue;
      const auto origin = onScreenOrigin(*frame);
      if (!origin) continue;
      try {
        moveIntoSight(window, frame->size, *origin);
        ++rescued;
        log_.standard("Rescued off-screen window from {}", application.localizedName);
      } catch (const PellowError& error) {
        log_.error("Could not rescue window from {}: {}", application.localizedName,
                   error.errorDescription());
      }
    }
  }
  if (clearJournal) journal_.clear();
  return rescued;
}

void OffscreenParking::moveIntoSight(const TargetWindow& window, Size size, QuartzPoint origin) {
  const auto taken = window.move(origin, Verify::yes, clock_);
  if (displays_.isHidden({taken, size})) throw PellowError::moveFailed(AXError::failure);
}

}  // namespace pellow
