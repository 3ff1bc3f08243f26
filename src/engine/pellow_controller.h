#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "access/ax_queue.h"
#include "access/pellow_error.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/task.h"
#include "capture/flight_animator.h"
#include "engine/automatic_triggers.h"
#include "engine/bulk_actions.h"
#include "engine/destroyed_window_watcher.h"
#include "engine/displays.h"
#include "engine/echo_guard.h"
#include "engine/failure_reports.h"
#include "engine/ledger.h"
#include "engine/mechanisms.h"
#include "engine/minimize_watcher.h"
#include "engine/offscreen_parking.h"
#include "engine/parked_windows.h"
#include "engine/parking_journal.h"
#include "engine/snapshots.h"
#include "model/mechanism.h"
#include "model/preferences.h"
#include "model/tab_item.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/panels.h"
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
//
// A window that the program has hidden has a tab in `store()` or stands in the ledger, at every
// moment. Calls into other applications run on the AX queue, one at a time; everything else runs on
// the main thread, and so does every member. Actions return at once and report their own failures.
class PellowController {
 public:
  // What the controller stands on; all of it outlives the controller.
  struct Surroundings {
    Accessibility& accessibility;
    AlertPresenter& alerts;
    Clock& clock;
    const Log& log;
    NotificationCenter& notifications;
    Panels& panels;
    Preferences& preferences;
    Queues& queues;
    ScreenCapture& screenCapture;
    Screens& screens;
    UserDefaults& userDefaults;
    UUIDSource& uuids;
    Workspace& workspace;
    ZoneStore& zones;
    ProcessID ownProcess;
  };

  explicit PellowController(const Surroundings& surroundings);
  PellowController(const PellowController&) = delete;
  PellowController& operator=(const PellowController&) = delete;
  ~PellowController();

  const TabStore& store() const { return store_; }
  const Ledger& ledger() const { return ledger_; }
  Displays& displays() { return displays_; }
  OffscreenParking& parking() { return parking_; }

  // Shows the strips and begins to follow displays and applications. Once, after launch.
  void start();

  // The focused window of the frontmost application; its whole application when the preferred
  // mechanism hides applications.
  void pellowFrontmost();

  // Every window of the pinned applications; of all ordinary applications; of all but the focused
  // window.
  void pellowPinnedApps() { bulkActions_.pellowPinnedApps(); }
  void pellowEverything() { bulkActions_.pellowEverything(); }
  void enterFocusMode() { bulkActions_.enterFocusMode(); }

  // Brings back the windows of these tabs, in the order of the store, one after another. The tabs
  // are gone when it returns.
  void restore(const std::vector<UUID>& ids);

  // The same for every tab.
  void restoreAll();

  // Puts every window back that has a tab or stands in the ledger, without raising it, and empties
  // store and journal. Unfinished actions end. Blocks for as long as the windows' applications take
  // to answer: for the end of the process only.
  void restoreAllBlocking();

  // Nothing is under way.
  bool isIdle() const { return tasks_.isIdle(); }

 private:
  // A window that is to become a tab of this zone.
  struct Chosen {
    RunningApplication application;
    TargetWindow window;
    Mechanism mechanism;
    TabZone zone;
  };

  // A window on its way to that.
  struct Leaving {
    Ledger::Claim claim;
    TabItem tab;
    TabZone zone;
    bool wasMinimized;

    Mechanisms::Departure departure() const;
  };

  // A tab on its way back to being a window.
  struct Returning {
    TabItem tab;
    Ledger::Claim claim;
    std::optional<AppKitRect> tabFrame;  // where it stood on the screen, for its flight
  };

  Task<> pellowFocusedWindow();
  Task<> pellowFocused(TargetWindow window);
  Task<> pellow(TargetWindow target, std::optional<UUID> zoneID,
                std::optional<Mechanism> mechanism);
  Task<> pellowApps(std::vector<AppWindows> applications, std::vector<TargetWindow> excluding);
  Task<> pellowWindows(std::vector<Chosen> windows);
  void hideAppAgain(ProcessID pid);
  Task<> hideApp(Chosen chosen);
  Task<std::vector<PellowError>> park(std::vector<Chosen> windows);
  Task<> photograph(Leaving& leaving);
  Task<> putAway(Leaving& leaving);
  void keepInDock(TabItem tab);
  void publish(TabItem tab);
  Task<std::vector<WindowState>> read(std::vector<TargetWindow> windows);

  Task<> restoreBatch(std::list<Returning> returning);
  Task<> restore(const Returning& returning);
  Task<> pruneDead();

  bool isTaken(const TargetWindow& window) const;
  bool hasTabForApp(ProcessID pid) const;
  TabZone chooseZone(const RunningApplication& application, std::optional<UUID> zoneID) const;
  Leaving makeLeaving(const Chosen& chosen, const WindowState& state, Ledger::Claim claim);
  void setCallbacks();
  void tabsDidChange();

  bool shouldAnimate(Mechanism mechanism) const;
  void flyOut(const TabItem& tab, const AppKitRect& tabFrame);
  void flyBack(const Returning& returning);

  Surroundings around_;
  TabStore store_;
  Ledger ledger_;
  std::vector<TargetWindow> pellowWhenBack_;  // asked for while they were coming back
  Displays displays_;
  ParkingJournal journal_;
  OffscreenParking parking_;
  ParkedWindows parkedWindows_;
  EchoGuard echoes_;
  AXQueue axQueue_;
  Mechanisms mechanisms_;
  Snapshots snapshots_;
  FlightAnimator flights_;
  FailureReports failures_;
  AutomaticTriggers triggers_;
  BulkActions bulkActions_;
  DestroyedWindowWatcher destroyedWindows_;
  MinimizeWatcher minimizeWatcher_;
  std::unique_ptr<TabStripController> strip_;  // from `start` on
  std::vector<Subscription> subscriptions_;
  Subscription bookkeeping_;
  TaskScope tasks_;  // ends first: its tasks use everything above
};

}  // namespace pellow
