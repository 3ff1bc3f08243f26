#pragma once

#include <expected>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/pellow_error.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/subscription.h"
#include "base/task.h"
#include "engine/ledger.h"
#include "engine/parking_journal.h"
#include "engine/parking_places.h"
#include "model/tab_store.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/queues.h"
#include "platform/screens.h"
#include "platform/workspace.h"

namespace pellow {

// Brings back what a previous run left off-screen, and any window that nobody can see. Quartz
// space, main thread.
class StrandedWindows {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    Clock& clock;
    const Displays& displays;
    ParkingJournal& journal;
    Ledger& ledger;
    const Log& log;
    MainQueue& mainQueue;
    const ParkingPlaces& places;
    Screens& screens;
    const TabStore& tabs;
    TaskScope& tasks;
    Workspace& workspace;
    ProcessID ownProcess;
  };

  explicit StrandedWindows(const Surroundings& surroundings) : around_(surroundings) {}

  // Brings back the windows that are still parked according to the journal, and empties it. If a
  // record has no window, sweeps for hidden windows too. Returns how many windows came back.
  //
  // Calls applications directly, waiting 0.25 s at most for one that does not answer; its records
  // stay, as do those of windows that would not move, and of an application with windows on other
  // Spaces.
  int recoverStrandedWindows();

  // Looks again for the windows of records that stayed: at once and whenever their application
  // becomes active, waiting for slow ones; at every change of the displays or the Space; and every
  // 5 s while some do not answer. Once.
  void start();

  // Moves every window of every ordinary application that cannot be seen and is not minimized onto
  // the main display; returns how many. Without `clearJournal`, windows whose records are kept are
  // left to them. Calls applications directly.
  int rescueHiddenWindows(bool clearJournal);

 private:
  // A window that a previous run may have parked.
  struct Candidate {
    TargetWindow window;
    std::string title;
    QuartzRect frame;
  };
  struct Candidates {
    std::vector<Candidate> found;
    std::set<ProcessID> silent;  // those that did not answer
  };
  struct Match {
    Candidate candidate;
    ParkingRecord record;
    bool isShared = false;  // the record belongs to another window
  };
  struct Pairing {
    std::vector<Match> matches;
    std::vector<ParkingRecord> unmatched;
  };
  // What became of a window that was asked to come back.
  enum class Outcome { back, gone, refused, unanswered };
  using Moved = std::expected<QuartzPoint, PellowError>;

  static Candidates gather(Accessibility& accessibility, const std::vector<ProcessID>& pids,
                           Seconds timeout);
  static Pairing pair(std::vector<Candidate> windows, std::vector<ParkingRecord> records);

  std::vector<ProcessID> processes(const std::string& bundleID) const;
  bool haveWindowsOnOtherSpaces(const std::vector<ProcessID>& pids) const;
  QuartzPoint home(const Match& match) const;
  Moved move(const TargetWindow& window, QuartzPoint origin, Seconds timeout) const;
  Moved inSight(Moved moved, Size size) const;
  Outcome recover(const Match& match);
  Outcome outcome(const Match& match, Moved moved) const;
  int rescueHiddenWindows(const RunningApplication& application, bool alsoThoseWithRecords);
  bool comesHome(const RunningApplication& application, const QuartzRect& frame) const;

  void lookAtAllAgain();
  void lookAgain(Seconds timeout, std::optional<std::string> onlyBundleID = std::nullopt);
  Task<> recoverLate(Seconds timeout, std::optional<std::string> onlyBundleID);
  Task<> recoverLate(Seconds timeout, std::string bundleID, std::vector<ParkingRecord> records);

  Surroundings around_;
  std::set<std::string> silent_;  // bundle identifiers of applications that have not answered
  bool isLooking_ = false;
  bool looksOnceMore_ = false;  // something has happened meanwhile
  std::vector<Subscription> subscriptions_;
  Subscription poll_;  // while some are silent
  Subscription soon_;
};

}  // namespace pellow
