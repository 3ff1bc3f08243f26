#pragma once

#include <QProxyStyle>

namespace pellow {

// Fusion with quieter details: a hairline around tooltips, in place of a frame in the colour of the
// text, and no shadow behind disabled text.
class HairlineStyle final : public QProxyStyle {
 public:
  HairlineStyle() : QProxyStyle("fusion") {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returned) const override;
};

}  // namespace pellow
