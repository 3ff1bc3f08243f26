#pragma once

#include "platform/accessibility.h"
#include "platforms/linux/x11/window_manager.h"

namespace pellow {

// Elements of X11: the system, applications and their windows. The attributes are
//
//   system        AXRole, AXFocusedApplication
//   application   AXRole, AXWindows, AXFocusedWindow
//   window        AXRole, AXSubrole, AXTitle, AXPosition, AXSize, AXMinimized, AXParent; of these
//                 AXPosition and AXMinimized can be written; the action is AXRaise
//
// Every other one answers `attributeUnsupported` or `actionUnsupported`.
class X11Accessibility : public Accessibility {
 public:
  X11Accessibility(X11Server& server, WindowManager& windowManager)
      : server_(server), windowManager_(windowManager) {}

  // An X display shows its windows to every client.
  bool isProcessTrusted() const override { return true; }
  AXElement systemWide() override;
  AXElement application(ProcessID pid) override;

 private:
  X11Server& server_;
  WindowManager& windowManager_;
};

}  // namespace pellow
