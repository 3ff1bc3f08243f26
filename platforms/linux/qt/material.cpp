#include "platforms/linux/qt/material.h"

#include <algorithm>

namespace pellow {
namespace {

QColor withAlpha(QColor colour, double alpha) {
  colour.setAlphaF(static_cast<float>(alpha));
  return colour;
}

QColor mixed(const QColor& one, const QColor& other, double share) {
  const auto mix = [&](double a, double b) { return static_cast<float>(a + (b - a) * share); };
  return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                          mix(one.blueF(), other.blueF()));
}

}  // namespace

Material Material::of(const QPalette& palette, bool translucent) {
  const auto window = palette.color(QPalette::Active, QPalette::Window);
  const auto text = palette.color(QPalette::Active, QPalette::WindowText);
  const bool dark = window.lightnessF() < text.lightnessF();
  // A panel lies on other windows of the same colour, so it stands out from them by a shade.
  const auto surface = dark ? mixed(window, Qt::white, 0.04) : mixed(window, Qt::white, 0.55);
  Material material;
  material.backdrop = withAlpha(surface, translucent ? 0.86 : 1.0);
  material.rim = dark ? withAlpha(Qt::black, 0.65) : withAlpha(Qt::black, 0.22);
  material.gleam = withAlpha(Qt::white, dark ? 0.14 : 0.75);
  material.hover = withAlpha(text, dark ? 0.11 : 0.08);
  material.pressed = withAlpha(text, dark ? 0.19 : 0.16);
  material.label = text;
  material.secondaryLabel = mixed(text, surface, 0.35);
  material.accent = palette.color(QPalette::Active, QPalette::Highlight);
  return material;
}

QColor Material::text(TextColour colour) const {
  switch (colour) {
    case TextColour::label:
      return label;
    case TextColour::secondaryLabel:
      return secondaryLabel;
    case TextColour::white:
      return Qt::white;
  }
  return label;
}

QColor Material::fill(const Fill& fill) const {
  return fill.accent ? accent : toQColor(fill.colour);
}

QColor toQColor(const Colour& colour) {
  const auto component = [](double value) {
    return static_cast<float>(std::clamp(value, 0.0, 1.0));
  };
  return QColor::fromRgbF(component(colour.red), component(colour.green), component(colour.blue),
                          component(colour.alpha));
}

}  // namespace pellow
