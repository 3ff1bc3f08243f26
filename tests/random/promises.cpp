#include "tests/random/promises.h"

#include <algorithm>
#include <cmath>
#include <variant>

#include <fmt/format.h>

#include "base/json.h"

namespace pellow::random {
namespace {

using simulated::ApplicationState;
using simulated::DesktopState;
using simulated::WindowID;
using simulated::WindowState;

constexpr double enoughToStay = 0.6;
constexpr double matchDistance = 4;

bool isParkedTab(const TabItem& tab) {
  return tab.mechanism == Mechanism::offscreen && tab.bundleID && tab.originalFrame;
}

// Compares everything but the place where it was parked.
bool isOf(const ParkingRecord& record, const TabItem& tab) {
  return record.bundleID == tab.bundleID && record.title == tab.title &&
         record.originalOrigin == tab.originalFrame->origin;
}

bool isWatched(const DesktopState& desktop, ProcessID pid) {
  return desktop.application(pid)->identity.activationPolicy == ActivationPolicy::regular;
}

// A tab whose window is parked, and where; no place when it does not obey to the point.
struct Parked {
  const TabItem* tab;
  std::optional<QuartzPoint> place;
};

bool isFor(const ParkingRecord& record, const Parked& parked) {
  return isOf(record, *parked.tab) &&
         (!parked.place || (std::abs(record.parkedOrigin.x - parked.place->x) <= matchDistance &&
                            std::abs(record.parkedOrigin.y - parked.place->y) <= matchDistance));
}

// The first tab without a record of its own that would let a launch find its window.
const TabItem* withoutRecord(std::vector<Parked> all, std::vector<ParkingRecord> records) {
  // Those whose place is known are the choosier ones.
  std::ranges::partition(all, [](const Parked& each) { return each.place.has_value(); });
  for (const auto& parked : all) {
    const auto found = std::ranges::find_if(
        records, [&](const ParkingRecord& record) { return isFor(record, parked); });
    if (found == records.end()) return parked.tab;
    records.erase(found);
  }
  return nullptr;
}

std::string place(const QuartzRect& frame) {
  return fmt::format("({}, {}) {} x {}", frame.minX(), frame.minY(), frame.width(), frame.height());
}

std::string stateOf(const DesktopState& desktop, const WindowState& window) {
  auto state = fmt::format("{} at {}, {:.0f} % in sight", nameOf(desktop, window),
                           place(window.frame), 100 * desktop.shareOnDisplays(window.frame));
  if (window.minimized) state += ", minimized";
  if (desktop.application(window.pid)->hidden) state += ", its application hidden";
  return state;
}

// The windows of the desktop that an element may stand for, by comparison.
WindowID identify(simulated::Desktop& desktop, const TargetWindow& target) {
  for (const auto& window : desktop.windows())
    if (window.pid() == target.pid && window.element() == target.element) return window.id();
  return 0;
}

// A window that does not answer stands for all of its application.
bool hasTroubled(const Sightings& sightings, ProcessID pid, bool Sighting::* wasTroubled) {
  return std::ranges::any_of(sightings.windows(), [&](const auto& entry) {
    return entry.second.pid == pid && entry.second.*wasTroubled;
  });
}

// The record of a run before, since its window could not be asked or would not come, or had no
// display to come back to.
bool mayStay(const Promises::Scene& scene, const ParkingRecord& record) {
  const auto& state = scene.desktop.state();
  return state.screens.empty() ||
         std::ranges::any_of(state.applications, [&](const ApplicationState& application) {
           return application.identity.bundleID == record.bundleID;
         });
}

}  // namespace

std::vector<ParkingRecord> parseJournal(const std::optional<DefaultsValue>& stored) {
  const auto* data = stored ? std::get_if<DefaultsData>(&*stored) : nullptr;
  if (!data) return {};
  return decodeJSON<std::vector<ParkingRecord>>(data->bytes).value_or(std::vector<ParkingRecord>{});
}

AwayWindows::AwayWindows(const PellowController& controller, simulated::Desktop& desktop) {
  for (const auto& tab : controller.store().tabs()) {
    windows_.insert(identify(desktop, tab.window));
    if (tab.mechanism == Mechanism::hideApp) applications_.insert(tab.window.pid);
  }
  for (const auto& entry : controller.ledger().entries()) {
    windows_.insert(identify(desktop, entry.window));
    applications_.insert(entry.window.pid);
  }
}

void Promises::whenBegun(simulated::Desktop& desktop) {
  kept_ = parseJournal(desktop.userDefaults().stored(journalKey));
}

std::optional<Breach> Promises::always(const Scene& scene) {
  noteTabs(scene);
  if (scene.sightings.misdeed())
    return Breach{"the program leaves alone what nobody asked it to touch, and every size",
                  *scene.sightings.misdeed()};
  if (auto breach = oneTab(scene)) return breach;
  if (auto breach = hiddenHasTab(scene)) return breach;
  return recordSurvivesCrash(scene);
}

void Promises::noteTabs(const Scene& scene) {
  const auto& desktop = scene.desktop.state();
  for (const auto& tab : scene.controller.store().tabs()) {
    const auto* seen = scene.sightings.window(identify(scene.desktop, tab.window));
    if (seen && seen->mayBeUnwatched) unwatched_.insert(tab.id);
    const auto* application = desktop.application(tab.window.pid);
    // If it has shrunk since it was read, a larger share may be seen.
    const bool wouldBeOffscreen =
        seen && tab.originalFrame &&
        desktop.shareOnDisplays({seen->frame.origin, tab.originalFrame->size}) <= hiddenShare;
    if (!seen || seen->isMinimized || seen->isOffscreen || wouldBeOffscreen || seen->wasTroubled ||
        !application || application->hidden || desktop.screens.empty())
      reasonable_.insert(tab.id);
    // Its end may have been announced while the action was under way.
    if (!application || application->hangs || !desktop.trustsProcess ||
        desktop.faultProbability > 0)
      unwatched_.insert(tab.id);
  }
  for (const auto& entry : scene.controller.ledger().entries()) {
    const auto* seen = scene.sightings.window(identify(scene.desktop, entry.window));
    if (entry.tab && seen && (seen->isMinimized || seen->isOffscreen))
      reasonable_.insert(entry.tab->id);
  }
}

std::optional<Breach> Promises::oneTab(const Scene& scene) const {
  const auto& tabs = scene.controller.store().tabs();
  const auto& entries = scene.controller.ledger().entries();
  const auto breach = [](const TabItem& tab) {
    return Breach{"a window has one tab at most, and is worked on once at a time",
                  fmt::format("\"{}\" of {} is there twice", tab.title, tab.appName)};
  };
  for (auto tab = tabs.begin(); tab != tabs.end(); ++tab)
    if (std::find_if(tab + 1, tabs.end(), [&](const TabItem& other) {
          return other.window == tab->window;
        }) != tabs.end())
      return breach(*tab);
  for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
    if (!entry->tab) continue;
    // While a tab is made public or given back, it is in the ledger too.
    for (const auto& tab : tabs)
      if (tab.window == entry->window && tab.id != entry->tab->id) return breach(tab);
    for (auto other = std::next(entry); other != entries.end(); ++other)
      if (other->window == entry->window) return breach(*entry->tab);
  }
  return std::nullopt;
}

// Excused: what a crash has left parked until the next launch has looked for it; and, until nothing
// is under way, a window that was minimized by an application too late for its caller: the program
// hears of it only after the fact.
std::optional<Breach> Promises::hiddenHasTab(const Scene& scene) const {
  constexpr auto promise = "a window that the program has hidden has a tab or stands in the ledger";
  const auto& desktop = scene.desktop.state();
  for (const auto& [id, seen] : scene.sightings.windows()) {
    if (!seen.isHiddenByProgram() || seen.isStranded || scene.away.contains(id)) continue;
    return Breach{promise, stateOf(desktop, *desktop.window(id))};
  }
  for (const auto pid : scene.sightings.hiddenApplications()) {
    const auto windows = desktop.windowsOf(pid);
    if (scene.away.standsForApplication(pid) || windows.empty()) continue;
    return Breach{promise, stateOf(desktop, *desktop.window(windows.front())) +
                               " by the program, and no tab stands for it"};
  }
  return std::nullopt;
}

std::optional<Breach> Promises::recordSurvivesCrash(const Scene& scene) {
  std::vector<Parked> parked;
  const auto add = [&](const TabItem& tab) {
    if (!isParkedTab(tab)) return;
    const auto* seen = scene.sightings.window(identify(scene.desktop, tab.window));
    if (!seen || !seen->isOffscreen || seen->movedOffBy != Doer::program) return;
    const bool obeys = !seen->wasTroubled && seen->homeIsCertain;
    parked.push_back({&tab, obeys ? std::optional(seen->frame.origin) : std::nullopt});
  };
  for (const auto& tab : scene.controller.store().tabs()) add(tab);
  for (const auto& entry : scene.controller.ledger().entries())
    if (entry.tab && !scene.controller.store().contains(entry.window)) add(*entry.tab);
  if (parked.empty()) return std::nullopt;

  auto written = scene.desktop.userDefaults().afterCrash(journalKey);
  if (written != journalWritten_) {
    journal_ = parseJournal(written);
    journalWritten_ = std::move(written);
  }
  const auto* lost = withoutRecord(parked, journal_);
  if (!lost) return std::nullopt;
  return Breach{"a window that is parked off-screen stands in the journal that a crash would leave",
                fmt::format("\"{}\" of {} is parked without a record", lost->title, lost->appName)};
}

std::optional<Breach> Promises::whenQuiet(const Scene& scene) {
  if (auto breach = always(scene)) return breach;
  if (auto breach = nothingUnderWay(scene)) return breach;
  if (auto breach = journalIsExact(scene)) return breach;
  if (auto breach = tabsHaveWindows(scene)) return breach;
  if (auto breach = tabsHadAReason(scene)) return breach;
  if (auto breach = parkedBeyondDisplays(scene)) return breach;

  const auto& desktop = scene.desktop.state();
  for (const auto& [id, seen] : scene.sightings.windows()) {
    const auto& window = *desktop.window(id);
    if (seen.waitsForNextLaunch) continue;
    if (seen.isStranded && hasTroubled(scene.sightings, seen.pid, &Sighting::wasTroubled)) continue;
    if (seen.isStranded && seen.isHiddenByProgram())
      return Breach{"after a crash the next launch brings back every parked window",
                    stateOf(desktop, window)};
    if (scene.away.contains(id)) continue;
    // Excused: an application that is not watched, and one that has stopped answering again.
    if (seen.isMinimized && seen.minimizedBy == Doer::late && !seen.wasTroubledSinceLate &&
        !scene.sightings.mayBeUnwatched(seen.pid) && isWatched(desktop, seen.pid))
      return Breach{"a window that is minimized late, as the program asked, gets its tab",
                    stateOf(desktop, window)};
    if (auto breach = isAtHome(
            desktop, window, seen,
            seen.isStranded ? "after a crash a window comes back to where it was"
                            : "a window without a tab is where it was before it was put away"))
      return breach;
  }
  return std::nullopt;
}

// Excused: a window that meanwhile did not do as asked, and one whose home cannot be known
// (`Sighting::homeIsCertain`) or is not on the displays any more.
std::optional<Breach> Promises::isAtHome(const DesktopState& desktop, const WindowState& window,
                                         const Sighting& seen, std::string_view promise) {
  if (!seen.homeIsCertain || seen.wasTroubled || window.frame.origin == seen.home.origin)
    return std::nullopt;
  if (desktop.shareOnDisplays({seen.home.origin, window.frame.size}) < enoughToStay)
    return std::nullopt;
  return Breach{std::string(promise), stateOf(desktop, window) + ", was at " + place(seen.home)};
}

std::optional<Breach> Promises::nothingUnderWay(const Scene& scene) const {
  constexpr auto promise = "when everything is quiet, nothing is under way";
  if (!scene.controller.isIdle()) return Breach{promise, "an action has not ended"};
  if (!scene.controller.ledger().entries().empty())
    return Breach{promise, "a window stands in the ledger"};
  if (!scene.desktop.panels().visible("pellow-flight").empty())
    return Breach{promise, "a picture still flies"};
  return std::nullopt;
}

// That every parked window has its record is asked at every moment; here: that no other record is
// left. A tab whose window is back in its place but still minimized needs none.
//
// Excused: a journal whose last write failed may still have records too many.
std::optional<Breach> Promises::journalIsExact(const Scene& scene) const {
  constexpr auto promise = "when everything is quiet, the journal has no record without a tab";
  std::vector<const TabItem*> parked;
  for (const auto& tab : scene.controller.store().tabs())
    if (isParkedTab(tab)) parked.push_back(&tab);
  const auto written = scene.desktop.userDefaults().stored(journalKey);
  const auto records = parseJournal(written);
  auto kept = kept_;
  for (const auto& record : records) {
    const auto forLater = std::ranges::find(kept, record);
    if (forLater != kept.end() && mayStay(scene, record)) {
      kept.erase(forLater);
      continue;
    }
    const auto owner =
        std::ranges::find_if(parked, [&](const TabItem* tab) { return isOf(record, *tab); });
    if (owner == parked.end())
      return Breach{promise, fmt::format("one of \"{}\" of {}, and {} parked tabs", record.title,
                                         record.bundleID, parked.size())};
    parked.erase(owner);
  }
  const bool lastWriteFailed = written != scene.desktop.userDefaults().afterCrash(journalKey);
  const auto onDisk = parseJournal(scene.desktop.userDefaults().afterCrash(journalKey));
  if (!lastWriteFailed && onDisk != records) return Breach{promise, "the disk has another one"};
  return std::nullopt;
}

// A tab of a hidden application stands for all of it, whatever happens to its window.
//
// Excused: a tab whose window could not be watched for certain, since its application did not
// answer at some time or calls failed; the next restore finds out.
std::optional<Breach> Promises::tabsHaveWindows(const Scene& scene) const {
  for (const auto& tab : scene.controller.store().tabs()) {
    if (tab.mechanism == Mechanism::hideApp &&
        scene.desktop.state().application(tab.window.pid) != nullptr)
      continue;
    if (identify(scene.desktop, tab.window) != 0 || unwatched_.contains(tab.id)) continue;
    return Breach{"when everything is quiet, no tab stands for a window that is gone",
                  fmt::format("\"{}\" of {}", tab.title, tab.appName)};
  }
  return std::nullopt;
}

// Excused: windows that nobody could say for certain were hidden.
std::optional<Breach> Promises::tabsHadAReason(const Scene& scene) const {
  for (const auto& tab : scene.controller.store().tabs())
    if (!reasonable_.contains(tab.id))
      return Breach{"a failed pellow leaves no tab",
                    fmt::format("\"{}\" of {} was never hidden", tab.title, tab.appName)};
  return std::nullopt;
}

// Excused: one that has moved since, and one whose application does not answer.
std::optional<Breach> Promises::parkedBeyondDisplays(const Scene& scene) const {
  const auto& desktop = scene.desktop.state();
  for (const auto& tab : scene.controller.store().tabs()) {
    const auto* const window = desktop.window(identify(scene.desktop, tab.window));
    if (!isParkedTab(tab) || !window || desktop.shareOnDisplays(window->frame) <= hiddenShare ||
        isTroubled(desktop, *window))
      continue;
    for (const auto& record : parseJournal(scene.desktop.userDefaults().afterCrash(journalKey)))
      if (isOf(record, tab) && record.parkedOrigin == window->frame.origin)
        return Breach{"no window stays parked on a display that came later",
                      stateOf(desktop, *window)};
  }
  return std::nullopt;
}

// Excused: windows that were troubled while the program ended, and their siblings.
std::optional<Breach> Promises::whenEnded(simulated::Desktop& desktop, const Sightings& sightings) {
  constexpr auto promise = "after an orderly end every window is back";
  const auto& state = desktop.state();
  for (const auto& [id, seen] : sightings.windows()) {
    if (seen.isStranded || hasTroubled(sightings, seen.pid, &Sighting::wasTroubledAtTheEnd))
      continue;
    const auto& window = *state.window(id);
    if (seen.isHiddenByProgram()) return Breach{promise, stateOf(state, window)};
    if (auto breach =
            isAtHome(state, window, seen, "after an orderly end every window is where it was"))
      return breach;
  }
  for (const auto pid : sightings.hiddenApplications())
    if (const auto windows = state.windowsOf(pid); !windows.empty())
      return Breach{promise, stateOf(state, *state.window(windows.front()))};
  return std::nullopt;
}

}  // namespace pellow::random
