#pragma once

#include <QColor>
#include <QPalette>

#include "platform/paint.h"

namespace pellow {

// The colours of panels, to match the light or dark ones of the desktop.
struct Material {
  bool isDark = false;
  QColor backdrop;
  QColor rim;      // the hairline around a backdrop
  QColor gleam;    // the hairline of light inside its upper rim
  QColor hover;    // over a view under the pointer
  QColor pressed;  // over a view that is being clicked
  QColor label;
  QColor secondaryLabel;
  QColor accent;

  // `translucent` where a compositor lets the windows below shine through.
  static Material of(const QPalette& palette, bool translucent);

  QColor colour(const Paint& paint) const;
};

QColor toQColor(const Colour& colour);
Colour toColour(const QColor& colour);

}  // namespace pellow
