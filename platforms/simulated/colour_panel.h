#pragma once

#include <memory>
#include <optional>

#include "platform/colour_panel.h"

namespace pellow::simulated {

class System;

// The one colour panel, in the hands of a user who tries colours. It stays open when its owner
// stops listening.
class ColourPanel final : public pellow::ColourPanel {
 public:
  explicit ColourPanel(System& system) : system_(system) {}

  Subscription show(Colour colour, std::function<void(Colour)> onChange) override;

  // None once the process has ended.
  bool isVisible() const;
  // The colour that it shows. Throws when it does not show, as `pick` and `close` do.
  Colour colour() const;
  void pick(Colour colour);
  void close();

 private:
  struct Shown {
    Colour colour;
    std::function<void(Colour)> onChange;  // empty once nobody listens
  };

  Shown& shown() const;

  System& system_;
  std::shared_ptr<Shown> shown_;
};

}  // namespace pellow::simulated
