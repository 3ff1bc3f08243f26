#pragma once

#include <vector>

#include "access/ax_queue.h"
#include "access/target_window.h"
#include "base/task.h"
#include "base/texts.h"
#include "capture/window_capture.h"
#include "diagnostics/diagnostic_report.h"
#include "platform/accessibility.h"
#include "platform/screen_capture.h"
#include "platform/workspace.h"

namespace pellow {

// Which windows can be found among those of the capture service, and photographed: for users whose
// tabs show icons in place of pictures. Main thread.
class CaptureDiagnostic {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    MainQueue& mainQueue;
    DiagnosticReport& report;
    ScreenCapture& screenCapture;
    const Texts& texts;
    Workspace& workspace;
    ProcessID ownProcess;
  };

  explicit CaptureDiagnostic(const Surroundings& around);

  // Every failure is a line of the report.
  Task<> diagnose();

 private:
  using Shareable = std::vector<ShareableWindow>;

  void emitPermission();
  Task<Shareable> shareableWindows();
  Task<> diagnoseApplication(const RunningApplication& application, const Shareable& shareable);
  Task<> diagnoseWindow(ProcessID pid, const WindowState& window, const Shareable& shareable);

  Surroundings around_;
  WindowCapture windowCapture_;
};

}  // namespace pellow
