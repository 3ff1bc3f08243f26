#include "platforms/linux/qt/qt_system_colours.h"

#include <QGuiApplication>

#include "platforms/linux/qt/material.h"

namespace pellow {

Colour QtSystemColours::resolve(SystemColour colour) const {
  return toColour(Material::of(QGuiApplication::palette(), true).colour(colour));
}

}  // namespace pellow
