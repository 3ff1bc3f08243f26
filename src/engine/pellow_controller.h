#pragma once

#include <exception>
#include <optional>
#include <vector>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/task.h"
#include "base/texts.h"
#include "capture/flight_animator.h"
#include "engine/automatic_triggers.h"
#include "engine/bulk_actions.h"
#include "engine/departures.h"
#include "engine/echo_guard.h"
#include "engine/failure_reports.h"
#include "engine/flights.h"
#include "engine/late_minimizes.h"
#include "engine/ledger.h"
#include "engine/mechanisms.h"
#include "engine/parked_windows.h"
#include "engine/parking_journal.h"
#include "engine/parking_places.h"
#include "engine/parking_upkeep.h"
#include "engine/returns.h"
#include "engine/snapshots.h"
#include "engine/stranded_windows.h"
#include "engine/tab_upkeep.h"
#include "model/mechanism.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/queues.h"
#include "platform/screen_capture.h"
#include "platform/screens.h"
#include "platform/user_defaults.h"
#include "platform/uuid_source.h"
#include "platform/workspace.h"
#include "strips/tab_strip_controller.h"
#include "views/alert_presenter.h"

namespace pellow {

// The engine: puts other applications' windows away, keeps a tab for each, and brings them back.
// The one place where strips, palette, menus and shortcuts ask for that.
//
// At every moment, a window that the program has hidden has a tab or is in the ledger. Calls into
// other applications run on the AX queue, one at a time; everything else, members included, runs on
// the main thread. Commands return at once unless they say that they block, and report their own
// failures.
class PellowController {
 public:
  // What the controller uses; all of it outlives the controller.
  struct Surroundings {
    Accessibility& accessibility;
    AlertPresenter& alerts;
    FlightAnimator& animator;
    Clock& clock;
    Displays& displays;
    const Log& log;
    NotificationCenter& notifications;
    const Preferences& preferences;
    Queues& queues;
    ScreenCapture& screenCapture;
    Screens& screens;
    const TabStripController& strips;
    TabStore& tabs;
    const Texts& texts;
    UserDefaults& userDefaults;
    UUIDSource& uuids;
    Workspace& workspace;
    const ZoneStore& zones;
    ProcessID ownProcess;
  };

  explicit PellowController(const Surroundings& surroundings);
  PellowController(const PellowController&) = delete;
  PellowController& operator=(const PellowController&) = delete;
  ~PellowController();

  // Before `start`: brings back the windows a previous run left off-screen; returns how many.
  // Blocks, for 0.25 s at most per application that does not answer.
  int recoverStrandedWindows() { return strandedWindows_.recoverStrandedWindows(); }

  // Begins to follow windows and applications. Once, after launch; until then a command that needs
  // windows is refused with `accessibilityDenied`.
  void start();

  const TabStore& store() const { return around_.tabs; }
  const Ledger& ledger() const { return ledger_; }

  // The focused window of the frontmost application, or the whole application when the preferred
  // mechanism hides applications.
  void pellowFrontmost();

  // Without a zone: the application's pin, else the default zone. Without a mechanism: the
  // preferred one.
  void pellow(TargetWindow window, std::optional<UUID> zoneID = std::nullopt,
              std::optional<Mechanism> mechanism = std::nullopt);

  // Every window of this window's application but those excluded.
  void pellowApp(TargetWindow of, std::optional<UUID> zoneID = std::nullopt,
                 std::vector<TargetWindow> excluding = {});

  // Every window of the pinned applications; of all ordinary applications; of all but the focused
  // window.
  void pellowPinnedApps();
  void pellowEverything();
  void enterFocusMode();

  // Brings back the windows of these tabs, in the order of the store, one by one. The tabs are gone
  // when this returns.
  void restore(const std::vector<UUID>& ids) { returns_.restore(ids); }
  void restoreAll();

  // Puts back every window that has a tab or is in the ledger, and empties store and journal.
  // Unfinished actions end. Blocks: for the end of the process only.
  void restoreAllBlocking();
  // The same before something that may end the process or not: everything goes on afterwards. A
  // window that could not be brought back keeps its tab.
  void restoreAllAndGoOn();

  // Moves every window of every ordinary application that cannot be seen and is not minimized onto
  // the main display; returns how many. Blocks.
  int rescueHiddenWindows(bool clearJournal) {
    return strandedWindows_.rescueHiddenWindows(clearJournal);
  }

  // Photographs a window that may be minimized next.
  void cacheSnapshot(TargetWindow window);

  // Whether nothing is under way.
  bool isIdle() const { return tasks_.isIdle(); }

 private:
  bool canAct();
  void actionEnded(std::exception_ptr failure);
  void setCallbacks();

  Surroundings around_;
  bool isStarted_ = false;
  Ledger ledger_;
  ParkingPlaces places_;
  ParkingJournal journal_;
  ParkedWindows parkedWindows_;
  EchoGuard echoes_;
  AXQueue axQueue_;
  FailureReports failures_;
  LateMinimizes lateMinimizes_;
  Flights flights_;
  Mechanisms mechanisms_;
  FocusHandover focus_;
  Snapshots snapshots_;
  TabUpkeep upkeep_;
  ParkingUpkeep parkingUpkeep_;
  Departures departures_;
  Returns returns_;
  StrandedWindows strandedWindows_;
  BulkActions bulkActions_;
  AutomaticTriggers triggers_;
  Subscription activations_;
  TaskScope tasks_;  // ends first: its tasks use everything above
};

}  // namespace pellow
