#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/parking_journal.h"
#include "platforms/simulated/desktop_state.h"

namespace pellow::random {

// A window cannot be seen if the displays show no larger share of it.
inline constexpr double hiddenShare = 0.05;

// Who did something to a window.
enum class Doer {
  program,  // whatever nobody else did
  others,   // the user, an application by itself, the desktop
  late,     // the application, when nobody waited any more for what it was asked
};

// What is known of one window: what it was like when it was last seen, and who made it so.
struct Sighting {
  ProcessID pid = 0;
  bool isMinimized = false;
  bool isOffscreen = false;  // five percent of it or less lie on the displays
  Doer minimizedBy = Doer::others;
  Doer movedOffBy = Doer::others;
  QuartzRect frame;
  int lateChanges = 0;

  // Where others last put it while it did not concern the program.
  QuartzRect home;
  // Whether it must stand at home whenever it is not away. Not if it was moved while away, the
  // displays changed meanwhile, or recovery may mistake it for another window.
  bool homeIsCertain = true;
  // Since its home became known, its application did not answer every call as others do.
  bool wasTroubled = false;
  // The same, since the program began to end.
  bool wasTroubledAtTheEnd = false;
  // The same, since its application did something that nobody waited for any more.
  bool wasTroubledSinceLate = false;
  // While it was away, the program may have been refused to watch it.
  bool mayBeUnwatched = false;
  // The user has or had it in hand: the program may be asked for exactly this window.
  bool wasInHand = false;
  // A process left it parked with a record, and the next launch must bring it back.
  bool isStranded = false;
  // Its application did not answer at that launch, so the one after it must bring it back.
  bool waitsForNextLaunch = false;

  bool isHiddenByProgram() const {
    return (isMinimized && minimizedBy == Doer::program) ||
           (isOffscreen && movedOffBy == Doer::program);
  }
};

// What was seen of a desktop, and who did it. Looks often: after everything that others do, to know
// their part; before it and at every call of the program, to know the program's.
class Sightings {
 public:
  using IsAway = std::function<bool(simulated::WindowID)>;

  // Notes what has changed since the last look and blames `doer` for it. `isAway` tells which
  // windows are tabs or are under way.
  void look(const simulated::DesktopState& desktop, Seconds now, Doer doer, const IsAway& isAway);

  // A sentence when the program has done what it never may: changed a size, or moved a window that
  // does not concern it.
  const std::optional<std::string>& misdeed() const { return misdeed_; }

  const std::map<simulated::WindowID, Sighting>& windows() const { return windows_; }
  const Sighting* window(simulated::WindowID id) const;
  // By the program.
  std::vector<ProcessID> hiddenApplications() const;
  // Since the program runs, it may have been refused to watch the application.
  bool mayBeUnwatched(ProcessID pid) const;

  // The program begins to end.
  void beginsToEnd();
  // The process is gone and has left these records: windows parked with one are stranded;
  // everything else that it had hidden stays for the user to find.
  void isLeftWith(const std::vector<ParkingRecord>& records,
                  const simulated::DesktopState& desktop);
  // A new program starts: its search for stranded windows may bring back hidden ones, too.
  void launches(const simulated::DesktopState& desktop);
  // Nothing is under way: the windows that are not away are at home.
  void settled(const simulated::DesktopState& desktop, const IsAway& isAway);
  // A stranded window of this application has another title: nobody can tell which is which.
  void renamed(ProcessID pid);

 private:
  void forgive();
  void forgetClosed(const simulated::DesktopState& desktop);
  void lookAtWindow(const simulated::DesktopState& desktop, const simulated::WindowState& window,
                    Doer doer, bool isAway);
  void judge(const simulated::DesktopState& desktop, const simulated::WindowState& window,
             const Sighting& before);
  void lookAtApplications(const simulated::DesktopState& desktop, Seconds now, Doer doer);

  struct Watch {
    Seconds since = 0;  // the program can know the application
    bool mayBeRefused = false;
  };

  std::map<simulated::WindowID, Sighting> windows_;
  std::map<ProcessID, Doer> hiddenApplications_;
  std::map<ProcessID, Watch> watches_;
  std::set<simulated::WindowID> askedBefore_;  // by a program that is gone
  std::set<ProcessID> wereFrontmost_;          // since all was quiet
  std::vector<Screen> screens_;
  std::optional<std::string> misdeed_;
};

// "window 3 "Letter" of Notes"
std::string nameOf(const simulated::DesktopState& desktop, const simulated::WindowState& window);

// Why a window may not do what it is asked at this moment: its application does not answer in time,
// calls fail, or the window has a mind of its own.
bool isTroubled(const simulated::DesktopState& desktop, const simulated::WindowState& window);

}  // namespace pellow::random
