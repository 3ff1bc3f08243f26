#pragma once

#include "platform/accessibility.h"

namespace pellow {

// Accessibility of the system.
class MacAccessibility final : public Accessibility {
 public:
  MacAccessibility();

  bool isProcessTrusted() const override;
  bool isProcessTrustedWithPrompt() override;
  AXElement systemWide() override { return systemWide_; }
  AXElement application(ProcessID pid) override;
  std::expected<AXElement, AXError> elementAtPosition(const AXElement& systemWide,
                                                      QuartzPoint point, Seconds timeout) override;
  std::expected<Subscription, AXError> observe(const AXElement& element,
                                               std::string_view notification,
                                               std::function<void(const AXElement&)> handler,
                                               Seconds timeout) override;

 private:
  const AXElement systemWide_;
};

}  // namespace pellow
