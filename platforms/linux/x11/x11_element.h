#pragma once

#include "platform/accessibility.h"
#include "platforms/linux/x11/window_events.h"
#include "platforms/linux/x11/window_manager.h"

namespace pellow {

// Elements of X11: the system, applications and their windows. The attributes are
//
//   system        AXRole, AXFocusedApplication
//   application   AXRole, AXWindows, AXFocusedWindow
//   window        AXRole, AXSubrole, AXTitle, AXPosition, AXSize, AXMinimized, AXParent; of these
//                 AXPosition and AXMinimized can be written; the action is AXRaise
//
// and a window posts AXUIElementDestroyed. Every other one answers `attributeUnsupported`,
// `actionUnsupported` or `notificationUnsupported`.
class X11Accessibility : public Accessibility {
 public:
  X11Accessibility(X11Server& server, WindowManager& windowManager, WindowEvents& windowEvents)
      : server_(server), windowManager_(windowManager), windowEvents_(windowEvents) {}

  // An X display shows its windows to every client.
  bool isProcessTrusted() const override { return true; }
  AXElement systemWide() override;
  AXElement application(ProcessID pid) override;
  std::expected<Subscription, AXError> observe(const AXElement& element,
                                               std::string_view notification,
                                               std::function<void()> handler) override;

 private:
  X11Server& server_;
  WindowManager& windowManager_;
  WindowEvents& windowEvents_;
};

}  // namespace pellow
