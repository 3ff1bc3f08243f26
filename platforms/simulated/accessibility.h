#pragma once

#include <optional>
#include <string>
#include <vector>

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
  // `Announcement` says what is posted when. A slow application adds an observer at once; one that
  // hangs holds up the caller as in any call.
  std::expected<Subscription, AXError> observe(const AXElement& element,
                                               std::string_view notification,
                                               std::function<void(const AXElement&)> handler,
                                               Seconds timeout) override;

  // The permission; without it every call answers `apiDisabled` and nothing is heard of elements.
  void setTrusted(bool trusted);
  // How often the system was to ask the user for it.
  int prompts() const;
  // The next call of this name, on any element, answers with the error. Names are those of
  // attributes, actions and notifications, "pid", "elementAtPosition", or empty for every name.
  void failNext(std::string name, AXError error, std::optional<AXCall> call = std::nullopt);
  // Every call fails with this probability and one of the errors, by seed, besides the faults
  // ordered. 0 ends it.
  void injectFaults(double probability, std::vector<AXError> errors = {AXError::cannotComplete});
  // Every call takes up to this long, by seed.
  void delayAnswers(Seconds longest);

 private:
  System& system_;
  Panels& panels_;
};

AXElement windowElement(System& system, WindowID window);
AXElement applicationElement(System& system, ProcessID pid);

}  // namespace pellow::simulated
