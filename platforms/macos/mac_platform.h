#pragma once

#include <memory>

#include "platform/platform.h"

namespace pellow {

// The program's operating system: macOS. Main thread, while there is an NSApplication.
class MacPlatform final : public Platform {
 public:
  // The log outlives the platform.
  explicit MacPlatform(const Log& log);
  ~MacPlatform() override;

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
  const Texts& texts() override { return macTexts; }
  UpdateFramework& updateFramework() override;
  UserDefaults& userDefaults() override;
  UUIDSource& uuidSource() override;
  Workspace& workspace() override;

 private:
  struct Parts;

  const std::unique_ptr<Parts> parts_;
};

}  // namespace pellow
