#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "engine/pellow_controller.h"
#include "platforms/simulated/desktop.h"
#include "tests/random/sightings.h"

namespace pellow::random {

// A promise that did not hold.
struct Breach {
  std::string promise;  // the same words for every breach of it
  std::string details;
};

// The windows that concern the program at one moment: tabs, and what is under way.
class AwayWindows {
 public:
  AwayWindows(const PellowController& controller, simulated::Desktop& desktop);

  bool contains(simulated::WindowID window) const { return windows_.contains(window); }
  const std::set<simulated::WindowID>& windows() const { return windows_; }
  // Whether something stands for the application as a whole.
  bool standsForApplication(ProcessID pid) const { return applications_.contains(pid); }

 private:
  std::set<simulated::WindowID> windows_;
  std::set<ProcessID> applications_;
};

// What the program promises its user, as questions to the desktop.
//
// The few excuses are written beside the promise that they excuse from.
class Promises {
 public:
  struct Scene {
    simulated::Desktop& desktop;
    PellowController& controller;
    const Sightings& sightings;
    const AwayWindows& away;
  };

  // Once the program has begun. What is in its journal then are records of windows that it could
  // not bring back yet.
  void whenBegun(simulated::Desktop& desktop);
  // At every moment while the program runs and does not end.
  std::optional<Breach> always(const Scene& scene);
  // When nothing is under way and no alert shows.
  std::optional<Breach> whenQuiet(const Scene& scene);
  // When the process has ended by itself.
  static std::optional<Breach> whenEnded(simulated::Desktop& desktop, const Sightings& sightings);

 private:
  std::optional<Breach> oneTab(const Scene& scene) const;
  std::optional<Breach> hiddenHasTab(const Scene& scene) const;
  std::optional<Breach> recordSurvivesCrash(const Scene& scene);
  std::optional<Breach> nothingUnderWay(const Scene& scene) const;
  std::optional<Breach> journalIsExact(const Scene& scene) const;
  std::optional<Breach> tabsHaveWindows(const Scene& scene) const;
  std::optional<Breach> tabsHadAReason(const Scene& scene) const;
  std::optional<Breach> parkedBeyondDisplays(const Scene& scene) const;
  static std::optional<Breach> isAtHome(const simulated::DesktopState& desktop,
                                        const simulated::WindowState& window, const Sighting& seen,
                                        std::string_view promise);

  void noteTabs(const Scene& scene);

  std::vector<ParkingRecord> kept_;              // of the run before
  std::set<UUID> unwatched_;                     // tabs whose windows may go unheard
  std::set<UUID> reasonable_;                    // tabs whose windows were hidden, or may have been
  std::optional<DefaultsValue> journalWritten_;  // as it was read last
  std::vector<ParkingRecord> journal_;
};

inline constexpr auto journalKey = "parkedWindows";

// The journal in the user defaults of a desktop; empty when there is none.
std::vector<ParkingRecord> parseJournal(const std::optional<DefaultsValue>& stored);

}  // namespace pellow::random
