#pragma once

#include "platform/colour_panel.h"

@class PellowColourListener;

namespace pellow {

// The shared NSColorPanel, in front though the application has no other window.
class MacColourPanel final : public ColourPanel {
 public:
  MacColourPanel();
  ~MacColourPanel() override;

  Subscription show(Colour colour, std::function<void(Colour)> onChange) override;

 private:
  PellowColourListener* listener_;
};

}  // namespace pellow
