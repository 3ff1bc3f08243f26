#pragma once

#include <memory>

#include "platform/colour_panel.h"

@class PellowColourListener;

namespace pellow {

class Foreground;

// The shared NSColorPanel, in front though the application has no other window.
class MacColourPanel final : public ColourPanel {
 public:
  explicit MacColourPanel(std::shared_ptr<Foreground> foreground);
  ~MacColourPanel() override;

  Subscription show(Colour colour, std::function<void(Colour)> onChange) override;

 private:
  PellowColourListener* listener_;
};

}  // namespace pellow
