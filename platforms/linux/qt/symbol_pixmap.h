#pragma once

#include <QColor>
#include <QPixmap>
#include <string>

namespace pellow {

// A system symbol by its name, for example "checkmark.circle.fill", in one colour on a transparent
// ground: `side` points square, `scale` pixels a point. Empty when there is no such symbol. Main
// thread.
QPixmap symbolPixmap(const std::string& name, const QColor& colour, int side, double scale);

// A transparent square of that size.
QPixmap transparentPixmap(int side, double scale);

}  // namespace pellow
