#pragma once

#include <expected>
#include <memory>
#include <optional>

#include "platform/platform.h"
#include "platform/system_error.h"
#include "platforms/linux/system/termination_signals.h"

namespace pellow {

// The program's operating system: an X11 desktop, Qt's windows, and files. Main thread, while there
// is a QtApplication.
class LinuxPlatform final : public Platform {
 public:
  // How to become the one Pellow of the display.
  enum class Claim {
    now,                   // refuse to start beside another one
    afterPredecessorEnds,  // the other one has started this process to take its place
    none,                  // stay beside another one, and put nobody's windows away
  };

  // Why no Qt application can be made here, as a sentence with the way out; nothing if one can.
  static std::optional<SystemError> whyNoDisplay();

  // The error is a sentence with the way out. The log and the signals outlive the platform.
  static std::expected<std::unique_ptr<LinuxPlatform>, SystemError> open(
      Claim claim, const Log& log, TerminationSignals& signals);

  ~LinuxPlatform() override;

  // Whether the main thread waits for an X server that somebody else has for himself: at the launch
  // and at the end, where the windows come first, but not in between.
  void setPatient(bool isPatient);

  Accessibility& accessibility() override;
  Alerts& alerts() override;
  Clock& clock() override;
  ColourPanel& colourPanel() override;
  EventMonitors& eventMonitors() override;
  Files& files() override;
  FormWindows& formWindows() override;
  const Log& log() override;
  LoginItem& loginItem() override;
  Panels& panels() override;
  ProbeWindows& probeWindows() override;
  Process& process() override;
  Queues& queues() override;
  ScreenCapture& screenCapture() override;
  Screens& screens() override;
  StatusBar& statusBar() override;
  SymbolicHotKeys& symbolicHotKeys() override;
  SystemColours& systemColours() override;
  const Texts& texts() override { return x11Texts; }
  UpdateFramework& updateFramework() override;
  UserDefaults& userDefaults() override;
  UUIDSource& uuidSource() override;
  Workspace& workspace() override;

 private:
  struct Parts;
  explicit LinuxPlatform(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> parts_;
};

}  // namespace pellow
