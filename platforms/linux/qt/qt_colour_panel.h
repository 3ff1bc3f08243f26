#pragma once

#include <QColorDialog>
#include <memory>

#include "platform/colour_panel.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// Qt's colour dialog as a window that stays above others and blocks nothing else. Made on first
// use, with the class name "pellow-colours"; goes when nobody wants it any more.
class QtColourPanel final : public ColourPanel {
 public:
  QtColourPanel();
  ~QtColourPanel() override;

  Subscription show(Colour colour, std::function<void(Colour)> onChange) override;

 private:
  // Of one call of `show`, alive as long as its subscription.
  struct Showing {
    std::function<void(Colour)> onChange;
  };

  QColorDialog& dialog();
  void tell(const QColor& colour);

  WindowHints hints_;
  std::unique_ptr<QColorDialog> dialog_;
  std::weak_ptr<Showing> current_;  // also empty once the user has closed the panel
};

}  // namespace pellow
