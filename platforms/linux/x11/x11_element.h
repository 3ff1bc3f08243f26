#pragma once

#include "platform/accessibility.h"
#include "platforms/linux/x11/application_events.h"
#include "platforms/linux/x11/errands.h"
#include "platforms/linux/x11/window_events.h"
#include "platforms/linux/x11/window_manager.h"

namespace pellow {

// Elements of X11: the system, applications and their windows. The attributes are
//
//   system        AXRole, AXFocusedApplication
//   application   AXRole, AXWindows, AXFocusedWindow, AXHidden, AXFrontmost, which can be set
//   window        AXRole, AXSubrole, AXTitle, AXPosition, AXSize, AXMinimized, AXParent; of these
//                 AXPosition and AXMinimized can be written; the action is AXRaise
//   button        AXRole, AXSubrole, AXPosition, AXSize, AXParent; of a window, to minimize it
//
// A window posts AXUIElementDestroyed, an application AXWindowMiniaturized and
// AXFocusedWindowChanged. Every other name answers `attributeUnsupported`, `actionUnsupported` or
// `notificationUnsupported`. The element at a point is a button, a window, or, on docks and
// desktops, their application.
class X11Accessibility : public Accessibility {
 public:
  X11Accessibility(X11Server& server, WindowManager& windowManager, WindowEvents& windowEvents,
                   ActiveWindow& activeWindow, Errands& errands)
      : server_(server),
        windowManager_(windowManager),
        windowEvents_(windowEvents),
        errands_(errands),
        applicationEvents_(server, windowEvents, activeWindow) {}

  // An X display shows its windows to every client.
  bool isProcessTrusted() const override { return true; }
  bool isProcessTrustedWithPrompt() override { return isProcessTrusted(); }
  AXElement systemWide() override;
  AXElement application(ProcessID pid) override;
  std::expected<Subscription, AXError> observe(const AXElement& element,
                                               std::string_view notification,
                                               std::function<void(const AXElement&)> handler,
                                               Seconds timeout) override;
  std::expected<AXElement, AXError> elementAtPosition(const AXElement& systemWide,
                                                      QuartzPoint point, Seconds timeout) override;

  // The list of clients has changed.
  void windowsChanged() { applicationEvents_.windowsChanged(); }

 private:
  using Handler = std::function<void(const AXElement&)>;

  std::expected<Subscription, AXError> observeWindow(const AXElement& element, Handler handler,
                                                     Seconds timeout);
  std::expected<Subscription, AXError> observeApplication(ProcessID pid,
                                                          std::string_view notification,
                                                          Handler handler);
  // For a caller on another thread: what is observed here belongs to the main thread.
  ApplicationEvents::Minimized minimizedWindows(ProcessID pid);
  Subscription observeLater(std::function<Subscription()> add);

  X11Server& server_;
  WindowManager& windowManager_;
  WindowEvents& windowEvents_;
  Errands& errands_;
  ApplicationEvents applicationEvents_;
};

}  // namespace pellow
