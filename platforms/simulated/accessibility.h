#pragma once

#include "platform/accessibility.h"
#include "platforms/simulated/desktop_state.h"

namespace pellow::simulated {

class Panels;
class System;

// Elements of simulated windows and applications, which answer as their manners have it.
//
// A window has two children, its minimize button and its content (`WindowPart`); its manners are
// theirs. What the program's own panels cover cannot be hit: the panel is found first, as a window
// of this process.
class Accessibility final : public pellow::Accessibility {
 public:
  Accessibility(System& system, Panels& panels) : system_(system), panels_(panels) {}

  bool isProcessTrusted() const override;
  bool isProcessTrustedWithPrompt() override;
  AXElement systemWide() override;
  AXElement application(ProcessID pid) override;
  std::expected<AXElement, AXError> elementAtPosition(const AXElement& systemWide,
                                                      QuartzPoint point, Seconds timeout) override;
  // `Announcement` has the rules of what is posted when. A slow application adds an observer at
  // once; one that hangs holds the caller up as in any other call.
  std::expected<Subscription, AXError> observe(const AXElement& element,
                                               std::string_view notification,
                                               std::function<void(const AXElement&)> handler,
                                               Seconds timeout) override;

 private:
  System& system_;
  Panels& panels_;
};

AXElement windowElement(System& system, WindowID window);
AXElement applicationElement(System& system, ProcessID pid);

}  // namespace pellow::simulated
