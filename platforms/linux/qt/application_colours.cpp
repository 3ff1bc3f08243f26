#include "platforms/linux/qt/application_colours.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <cstddef>

namespace pellow {
namespace {

constexpr QRgb lightAccent = 0xff2b72d8;
constexpr QRgb darkAccent = 0xff3b7be0;

struct Shade {
  QPalette::ColorRole role;
  QRgb colour;
};

// Tooltips as light as menus, not the yellow of old.
constexpr Shade light[] = {
    {QPalette::ToolTipBase, 0xfffcfcfd},
    {QPalette::ToolTipText, 0xff1d1d1f},
};

// A hint of blue keeps greys from looking brown beside icons. The style makes buttons lighter than
// said here, and draws edges darker than windows.
constexpr Shade dark[] = {
    {QPalette::Window, 0xff2a2a2d},      {QPalette::WindowText, 0xffebebee},
    {QPalette::Base, 0xff222225},        {QPalette::AlternateBase, 0xff28282b},
    {QPalette::Text, 0xffebebee},        {QPalette::PlaceholderText, 0xff8e8e94},
    {QPalette::Button, 0xff2e2e32},      {QPalette::ButtonText, 0xffebebee},
    {QPalette::BrightText, 0xffffffff},  {QPalette::ToolTipBase, 0xff3a3a3e},
    {QPalette::ToolTipText, 0xfff2f2f4}, {QPalette::Light, 0xff505055},
    {QPalette::Midlight, 0xff444449},    {QPalette::Mid, 0xff242427},
    {QPalette::Dark, 0xff1a1a1c},        {QPalette::Shadow, 0xff000000},
    {QPalette::LinkVisited, 0xffb79bf0},
};
constexpr Shade darkDisabled[] = {
    {QPalette::WindowText, 0xff7c7c82}, {QPalette::Text, 0xff7c7c82},
    {QPalette::ButtonText, 0xff7c7c82}, {QPalette::HighlightedText, 0xff7c7c82},
    {QPalette::Highlight, 0xff4a4a50},
};

// Menus are nearer than the windows below them, so lighter. What stands in a menu or on a window is
// outlined in a shade darker than "Window", which shows nowhere else there.
constexpr Shade darkMenu[] = {
    {QPalette::Base, 0xff323236},
    {QPalette::Window, 0xff727278},
};
constexpr Shade darkField[] = {{QPalette::Window, 0xff86868c}};

template <std::size_t count>
void set(QPalette& palette, const Shade (&shades)[count],
         QPalette::ColorGroup group = QPalette::All) {
  for (const auto& [role, colour] : shades) palette.setColor(group, role, QColor(colour));
}

// White wherever it can be read: that is what people know on an accent.
QColor textOn(const QColor& accent) {
  constexpr int lightest = 170;
  return qGray(accent.rgb()) > lightest ? QColor(0x1a1a1c) : QColor(Qt::white);
}

void setAccent(QPalette& palette, const QColor& accent, const QColor& link) {
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    palette.setColor(group, QPalette::Highlight, accent);
    palette.setColor(group, QPalette::HighlightedText, textOn(accent));
    palette.setColor(group, QPalette::Link, link);
  }
}

QPalette lightPalette(const QColor& accent) {
  auto palette = QApplication::style()->standardPalette();
  set(palette, light);
  setAccent(palette, accent, accent);
  return palette;
}

QPalette darkPalette(const QColor& accent) {
  QPalette palette;
  set(palette, dark);
  set(palette, darkDisabled, QPalette::Disabled);
  setAccent(palette, accent, accent.lighter(140));
  return palette;
}

template <std::size_t count>
QPalette with(const Shade (&shades)[count], QPalette palette) {
  set(palette, shades);
  return palette;
}

}  // namespace

// A palette for all takes those of single classes away.
void ApplicationColours::apply() const {
  if (!areDark) return QApplication::setPalette(lightPalette(accent.value_or(lightAccent)));
  const auto palette = darkPalette(accent.value_or(darkAccent));
  QApplication::setPalette(palette);
  QApplication::setPalette(with(darkMenu, palette), "QMenu");
  for (const auto* kind : {"QCheckBox", "QRadioButton", "QLineEdit"})
    QApplication::setPalette(with(darkField, palette), kind);
}

}  // namespace pellow
