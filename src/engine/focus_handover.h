#pragma once

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/target_window.h"
#include "base/task.h"
#include "engine/echo_guard.h"
#include "engine/ledger.h"
#include "engine/mechanisms.h"
#include "model/tab_store.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/workspace.h"

namespace pellow {

// A window that slides off the displays keeps the keyboard, and what is typed goes where nobody
// sees it. This hands the keyboard on, as when the window is minimized. Main thread.
class FocusHandover {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    Clock& clock;
    const Displays& displays;
    EchoGuard& echoes;
    const Ledger& ledger;
    Mechanisms& mechanisms;
    const TabStore& tabs;
    Workspace& workspace;
    ProcessID ownProcess;
  };

  explicit FocusHandover(const Surroundings& surroundings) : around_(surroundings) {}

  // If a window off the displays has the keyboard, it goes to the front window that can be seen;
  // without one, to the desktop. Ends when the window has it, or half a second later. So long, too,
  // the system may take to move it on from a window that was minimized.
  Task<> handOver();

 private:
  Task<bool> systemMovesIt();
  Task<bool> isKeyboardOffDisplays();
  Task<std::optional<TargetWindow>> focusedWindow();
  Task<std::optional<TargetWindow>> firstInSight();
  // How the window was put away; nothing if it was not.
  std::optional<Mechanism> mechanismOf(const TargetWindow& window) const;
  Task<> pause();

  Surroundings around_;
};

}  // namespace pellow
