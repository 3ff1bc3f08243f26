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
#include "engine/destroyed_window_watcher.h"
#include "engine/displays.h"
#include "engine/ledger.h"
#include "engine/offscreen_parking.h"
#include "engine/parking_journal.h"
#include "model/mechanism.h"
#include "model/preferences.h"
#include "model/tab_item.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/panels.h"
#include "platform/queues.h"
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
// the main thread, and so does every member.
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
  Displays& displays() { return displays_; }
  OffscreenParking& parking() { return parking_; }

  // Shows the strips and begins to follow the displays. Once, after launch.
  void start();

  // Pellows the focused window of the frontmost application; its whole application when the
  // preferred mechanism hides applications. Reports its own failures.
  void pellowFrontmost();

  // Brings back the windows of these tabs, in the order of the store, one after another. Returns at
  // once; the tabs are gone when it does. Reports its own failures.
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
  // What a park needs to know about a window before it touches it.
  struct WindowState {
    std::string title;
    std::optional<QuartzRect> frame;
    bool isMinimized = false;
  };

  // A tab on its way back to being a window.
  struct Returning {
    TabItem tab;
    Ledger::Claim claim;
  };

  Task<> pellowFocusedWindow();
  Task<> pellow(TargetWindow window, std::optional<UUID> zoneID,
                std::optional<Mechanism> mechanism);
  Task<> hideApp(TargetWindow window, TabZone zone);
  Task<> park(TargetWindow window, Mechanism mechanism, TabZone zone);
  Task<> minimize(const TabItem& tab);
  Task<> slideOffscreen(const TabItem& tab, StripEdge side);
  // Whether the window is certainly not hidden any more.
  Task<bool> slideBack(const TabItem& tab);
  Task<WindowState> read(TargetWindow window);

  Task<> restoreBatch(std::list<Returning> returning);
  Task<> restore(const TabItem& tab);
  Task<> reveal(const TabItem& tab);
  Task<> bringToFront(const TargetWindow& window);
  void putBackBlocking(const TabItem& tab);

  TabZone chooseZone(const TargetWindow& window, std::optional<UUID> zoneID) const;
  TabItem makeTab(const TargetWindow& window, const RunningApplication& application,
                  const WindowState& state, Mechanism mechanism, const TabZone& zone);
  std::vector<TabItem> parkedTabs() const;
  void forgetRecord(const TabItem& tab);
  void tabsDidChange();
  void report(const PellowError& error, int additional);
  Task<> tell(PellowError error, int additional);

  Surroundings around_;
  TabStore store_;
  Ledger ledger_;
  Displays displays_;
  ParkingJournal journal_;
  OffscreenParking parking_;
  std::unique_ptr<TabStripController> strip_;  // from `start` on
  DestroyedWindowWatcher destroyedWindows_;
  std::vector<Subscription> subscriptions_;
  AXQueue axQueue_;
  TaskScope tasks_;  // ends first: its tasks use everything above
};

}  // namespace pellow
