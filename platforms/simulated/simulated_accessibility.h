#pragma once

#include "platform/accessibility.h"
#include "platforms/simulated/desktop_state.h"

namespace pellow::simulated {

class SimulatedSystem;

// Elements of simulated windows and applications, which answer as their manners have it.
class SimulatedAccessibility final : public Accessibility {
 public:
  explicit SimulatedAccessibility(SimulatedSystem& system) : system_(system) {}

  bool isProcessTrusted() const override;
  AXElement systemWide() override;
  AXElement application(ProcessID pid) override;
  // Windows post "AXUIElementDestroyed".
  std::expected<Subscription, AXError> observe(const AXElement& element,
                                               std::string_view notification,
                                               std::function<void()> handler) override;

 private:
  SimulatedSystem& system_;
};

AXElement windowElement(SimulatedSystem& system, WindowID window);
AXElement applicationElement(SimulatedSystem& system, ProcessID pid);

}  // namespace pellow::simulated
