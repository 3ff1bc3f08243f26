#include "platforms/linux/qt/form_texts.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>

#include "platforms/linux/qt/material.h"
#include "platforms/linux/qt/symbol_pixmap.h"

namespace pellow {
namespace {

constexpr int widestLine = 420;         // points, the most
constexpr int sectionAir = 8;           // points above the title of a section
constexpr int symbolSide = 16;          // points
constexpr int symbolDistance = 5;       // points
constexpr int textPixelSize = 13;       // points
constexpr int secondaryPixelSize = 11;  // points

QFont fontOf(QFont font, FormTextStyle style) {
  font.setPixelSize(style == FormTextStyle::secondary ? secondaryPixelSize : textPixelSize);
  font.setBold(style == FormTextStyle::section);
  return font;
}

QColor tintOf(const FormStatus& status, const QPalette& palette) {
  const bool dark = palette.color(QPalette::Window).lightnessF() <
                    palette.color(QPalette::WindowText).lightnessF();
  if (status.tint == FormStatus::Tint::good) return dark ? 0x4cc264 : 0x1f7a35;
  return dark ? 0xf0a830 : 0xa85a00;
}

}  // namespace

TextControl::TextControl(QWidget& parent) : QLabel(&parent) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void TextControl::showContent(const FormContent& content) {
  const auto& shown = std::get<FormText>(content);
  style_ = shown.style;
  if (const auto wanted = fontOf(font(), style_); font() != wanted) setFont(wanted);
  setContentsMargins(0, style_ == FormTextStyle::section ? sectionAir : 0, 0, 0);
  if (const auto string = QString::fromStdString(shown.text); text() != string) setText(string);
  chooseColour();
}

void TextControl::setColumn(int width) {
  if (std::exchange(column_, width) != width) updateGeometry();
}

int TextControl::ownWidth() const {
  // A point more, for the fraction of one that is cut off.
  return std::min(fontMetrics().size(0, text()).width() + 1, widestLine);
}

QSize TextControl::sizeHint() const {
  const int width = std::max(ownWidth(), column_);
  return {width, QLabel::heightForWidth(width)};
}

void TextControl::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) chooseColour();
  QLabel::changeEvent(event);
}

void TextControl::chooseColour() {
  const auto around = parentWidget()->palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    const auto colour = style_ == FormTextStyle::secondary
                            ? Material::of(around, false).secondaryLabel
                            : around.color(group, QPalette::WindowText);
    if (palette().color(group, QPalette::WindowText) == colour) continue;
    auto changed = palette();
    changed.setColor(group, QPalette::WindowText, colour);
    setPalette(changed);
  }
}

StatusControl::StatusControl(QWidget& parent) : QWidget(&parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void StatusControl::showContent(const FormContent& content) {
  const auto& shown = std::get<FormStatus>(content);
  if (shown == status_) return;
  status_ = shown;
  setAccessibleName(QString::fromStdString(shown.text));
  updateGeometry();
  update();
}

QSize StatusControl::sizeHint() const {
  const auto text = fontMetrics().size(Qt::TextSingleLine, QString::fromStdString(status_.text));
  return {symbolSide + symbolDistance + text.width() + 1, std::max(symbolSide, text.height())};
}

void StatusControl::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const auto colour = isEnabled() ? tintOf(status_, palette())
                                  : palette().color(QPalette::Disabled, QPalette::WindowText);
  painter.drawPixmap(0, (height() - symbolSide) / 2,
                     symbolPixmap(status_.symbol, colour, symbolSide, devicePixelRatioF()));
  painter.setPen(colour);
  painter.drawText(rect().adjusted(symbolSide + symbolDistance, 0, 0, 0),
                   Qt::AlignLeft | Qt::AlignVCenter, QString::fromStdString(status_.text));
}

}  // namespace pellow
