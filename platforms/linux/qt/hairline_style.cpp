#include "platforms/linux/qt/hairline_style.h"

#include <QPainter>
#include <QStyleOption>

namespace pellow {
namespace {

constexpr float frameOpacity = 0.22F;  // of the text's colour

}  // namespace

void HairlineStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                  QPainter* painter, const QWidget* widget) const {
  if (element != PE_PanelTipLabel)
    return QProxyStyle::drawPrimitive(element, option, painter, widget);
  auto frame = option->palette.color(QPalette::ToolTipText);
  frame.setAlphaF(frameOpacity);
  painter->save();
  painter->setPen(QPen(frame, 1));
  painter->setBrush(option->palette.toolTipBase());
  painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
  painter->restore();
}

int HairlineStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                             QStyleHintReturn* returned) const {
  if (hint == SH_EtchDisabledText) return 0;
  return QProxyStyle::styleHint(hint, option, widget, returned);
}

}  // namespace pellow
