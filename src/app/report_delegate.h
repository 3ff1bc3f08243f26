#pragma once

#include <string_view>
#include <vector>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "app/command_line.h"
#include "base/subscription.h"
#include "base/task.h"
#include "diagnostics/capture_diagnostic.h"
#include "diagnostics/diagnostic_report.h"
#include "diagnostics/offscreen_diagnostic.h"
#include "platform/platform.h"

namespace pellow {

// The composition root of a process that only writes a report. It runs beside a Pellow that is
// running, puts nobody's windows away, and ends with status 0 whatever it finds. Main thread.
class ReportDelegate {
 public:
  ReportDelegate(Platform& platform, ReportMode mode);
  ReportDelegate(const ReportDelegate&) = delete;
  ReportDelegate& operator=(const ReportDelegate&) = delete;

  // Once, when the main loop runs. The process ends by itself when the report is written.
  void applicationDidFinishLaunching();

  // Once, when the main loop is about to end before the report did.
  void applicationWillTerminate() { fail("the session ended"); }

 private:
  Task<> run();
  // Ends the report where it is.
  void fail(std::string_view why);

  Platform& platform_;
  const ReportMode mode_;
  Displays displays_;
  AXQueue axQueue_;
  DiagnosticReport report_;
  OffscreenDiagnostic offscreen_;
  CaptureDiagnostic capture_;
  std::vector<Subscription> signalSources_;
  TaskScope task_;
};

}  // namespace pellow
