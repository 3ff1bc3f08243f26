#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "access/ax_queue.h"
#include "access/target_window.h"
#include "base/geometry.h"
#include "base/log.h"
#include "base/task.h"
#include "base/texts.h"
#include "capture/window_capture.h"
#include "model/preferences.h"
#include "platform/clock.h"
#include "platform/image.h"
#include "platform/queues.h"
#include "platform/screen_capture.h"

namespace pellow {

// The pictures for tabs. A window about to be put away is photographed; one that the user has
// minimized is off the screen already, so windows likely to be next are photographed ahead and
// their pictures kept for a while. Only while the user wants pictures and the system allows them.
// Main thread.
class Snapshots {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    const Clock& clock;
    const Log& log;
    MainQueue& mainQueue;
    const Preferences& preferences;
    ScreenCapture& screenCapture;
    const Texts& texts;
  };

  explicit Snapshots(const Surroundings& surroundings)
      : around_(surroundings), capture_(around_.screenCapture, around_.mainQueue, around_.texts) {}

  // Called once, when the user wants pictures and the system does not allow them.
  std::function<void()> onScreenRecordingDenied;

  // Whether pictures are wanted and allowed now.
  bool isEnabled() const;

  // A picture of a window that is on the screen now, or none.
  Task<std::optional<Image>> snapshotIfEnabled(ProcessID pid, std::string title, QuartzRect frame);

  // Photographs a window ahead, unless it is minimized or was photographed a moment ago.
  Task<> cacheSnapshot(TargetWindow window);
  Task<> cacheSnapshotOfFocusedWindow(ProcessID pid);

  // The picture taken ahead, if still fresh.
  std::optional<Image> cachedSnapshot(const AXElement& window) const;

 private:
  struct Snapshot {
    AXElement window;
    Image image;
    Seconds taken = 0;
  };

  bool wasTakenWithin(const AXElement& window, Seconds age) const;
  void keep(const AXElement& window, Image image);
  const Snapshot* find(const AXElement& window) const;

  Surroundings around_;
  WindowCapture capture_;
  std::deque<Snapshot> snapshots_;  // the newest last
  bool warnedAboutScreenRecording_ = false;
};

}  // namespace pellow
