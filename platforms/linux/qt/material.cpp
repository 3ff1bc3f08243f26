#include "platforms/linux/qt/material.h"

#include <variant>

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

QColor systemColour(SystemColour colour, const Material& material) {
  const auto shade = [&](QRgb light, QRgb dark) { return QColor(material.isDark ? dark : light); };
  switch (colour) {
    case SystemColour::label:
      return material.label;
    case SystemColour::secondaryLabel:
      return material.secondaryLabel;
    case SystemColour::separator:
      return withAlpha(material.label, material.isDark ? 0.2 : 0.14);
    case SystemColour::accent:
      return material.accent;
    case SystemColour::red:
      return shade(0xe2362f, 0xff5a52);
    case SystemColour::orange:
      return shade(0xef8700, 0xffa033);
    case SystemColour::yellow:
      return shade(0xe8b800, 0xffd53d);
    case SystemColour::green:
      return shade(0x2da44e, 0x42c966);
    case SystemColour::blue:
      return shade(0x2271e0, 0x438fff);
    case SystemColour::purple:
      return shade(0x964fcc, 0xbd70f0);
    case SystemColour::pink:
      return shade(0xe0427a, 0xff6096);
    case SystemColour::grey:
      return shade(0x8a8a8f, 0x9b9ba1);
  }
  return material.label;
}

}  // namespace

Material Material::of(const QPalette& palette, bool translucent) {
  const auto window = palette.color(QPalette::Active, QPalette::Window);
  const auto text = palette.color(QPalette::Active, QPalette::WindowText);
  const bool dark = window.lightnessF() < text.lightnessF();
  // A shade off, so that a panel stands out from windows of the same colour below it.
  const auto surface = dark ? mixed(window, Qt::white, 0.04) : mixed(window, Qt::white, 0.55);
  Material material;
  material.isDark = dark;
  material.backdrop = withAlpha(surface, translucent ? 0.86 : 1.0);
  material.rim = dark ? withAlpha(Qt::black, 0.65) : withAlpha(Qt::black, 0.22);
  material.gleam = withAlpha(Qt::white, dark ? 0.18 : 0.75);
  material.hover = withAlpha(text, dark ? 0.11 : 0.08);
  material.pressed = withAlpha(text, dark ? 0.19 : 0.16);
  material.label = text;
  material.secondaryLabel = withAlpha(text, 0.65);
  material.accent = palette.color(QPalette::Active, QPalette::Highlight);
  return material;
}

QColor Material::colour(const Paint& paint) const {
  if (const auto* always = std::get_if<Colour>(&paint)) return toQColor(*always);
  return systemColour(std::get<SystemColour>(paint), *this);
}

QColor toQColor(const Colour& colour) {
  return QColor::fromRgbF(static_cast<float>(colour.red()), static_cast<float>(colour.green()),
                          static_cast<float>(colour.blue()), static_cast<float>(colour.alpha()));
}

Colour toColour(const QColor& colour) {
  return {colour.redF(), colour.greenF(), colour.blueF(), colour.alphaF()};
}

}  // namespace pellow
