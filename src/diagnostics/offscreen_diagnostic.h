#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/target_window.h"
#include "base/task.h"
#include "base/texts.h"
#include "diagnostics/colour_witness.h"
#include "diagnostics/diagnostic_report.h"
#include "engine/parking_places.h"
#include "platform/accessibility.h"
#include "platform/probe_windows.h"
#include "platform/screen_capture.h"
#include "platform/screens.h"
#include "platform/workspace.h"

namespace pellow {

// How far a window can leave the displays here: moves a window of its own, and no other, by the
// rule that the engine parks by and beyond, and tells where it really went. Coordinates can lie, so
// the window has a colour that is looked for in pictures of the displays. Main thread.
class OffscreenDiagnostic {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    Displays& displays;
    MainQueue& mainQueue;
    ProbeWindows& probeWindows;
    DiagnosticReport& report;
    ScreenCapture& screenCapture;
    Screens& screens;
    const Texts& texts;
    Workspace& workspace;
    ProcessID ownProcess;
    std::string version;  // the program's
  };

  explicit OffscreenDiagnostic(const Surroundings& around);

  // Every failure is a line of the report.
  Task<> run();

 private:
  void emitDesktop();
  QuartzRect unionOfScreens() const;
  Task<> tryPlaces(QuartzRect start);
  Task<> tryFormula(std::string_view title, StripEdge edge);
  Task<> tryOnSecondScreen(QuartzRect screen);
  // Asks for a place and tells what came of it. Whether the window can no longer be seen.
  Task<bool> tryPlace(std::string_view title, QuartzPoint asked);
  void emitPlace(QuartzPoint asked, const QuartzRect& frame);
  void emitResult();

  // Of the window.
  Task<std::optional<AXElement>> findWindow();
  Task<std::expected<std::vector<TargetWindow>, AXError>> ownWindows();
  Task<std::optional<QuartzRect>> frame();
  Task<std::expected<void, AXError>> moveTo(QuartzPoint origin);
  // The same, when it only matters that it fails.
  Task<> put(QuartzPoint origin, std::string_view where);
  Task<> resize(Size contentSize);

  Surroundings around_;
  ParkingPlaces places_;
  ColourWitness witness_;
  std::unique_ptr<ProbeWindow> probe_;
  std::optional<AXElement> window_;  // once it has been found
  int parkings_ = 0;
  int failedParkings_ = 0;
};

}  // namespace pellow
