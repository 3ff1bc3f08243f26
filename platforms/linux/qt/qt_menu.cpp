#include "platforms/linux/qt/qt_menu.h"

#include <QAction>
#include <QIcon>
#include <QKeySequence>
#include <QPainter>
#include <QPixmap>
#include <variant>

#include "platform/event_monitors.h"
#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/material.h"
#include "platforms/linux/qt/symbol_pixmap.h"

namespace pellow {
namespace {

constexpr int imageSide = 16;      // points
constexpr double swatchSide = 12;  // points
constexpr double swatchRadius = 3;

// On its own picture: many styles show an item's picture in place of its check mark.
void drawCheckMark(QPainter& painter, const QColor& below) {
  const bool isLight = qGray(below.rgb()) > 160;
  painter.setPen(
      QPen(isLight ? Qt::black : Qt::white, 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  const QPointF centre(imageSide / 2.0, imageSide / 2.0);
  painter.drawPolyline(QPolygonF{centre + QPointF(-3, 0.25), centre + QPointF(-0.75, 2.5),
                                 centre + QPointF(3, -2.25)});
}

QIcon swatch(const QColor& fill, bool isChecked, double scale) {
  auto pixmap = transparentPixmap(imageSide, scale);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(fill);
  painter.setPen(QPen(fill.darker(130), 1 / scale));
  const double margin = (imageSide - swatchSide) / 2 + 0.5 / scale;
  painter.drawRoundedRect(
      QRectF(0, 0, imageSide, imageSide).adjusted(margin, margin, -margin, -margin), swatchRadius,
      swatchRadius);
  if (isChecked) drawCheckMark(painter, fill);
  painter.end();
  QIcon icon(pixmap);
  icon.addPixmap(pixmap, QIcon::Disabled);
  return icon;
}

QIcon symbol(const std::string& name, const QMenu& menu) {
  const double scale = menu.devicePixelRatioF();
  QIcon icon;
  const auto add = [&](QPalette::ColorGroup group, QPalette::ColorRole role, QIcon::Mode mode) {
    icon.addPixmap(symbolPixmap(name, menu.palette().color(group, role), imageSide, scale), mode);
  };
  add(QPalette::Active, QPalette::Text, QIcon::Normal);
  add(QPalette::Active, QPalette::HighlightedText, QIcon::Active);
  add(QPalette::Disabled, QPalette::Text, QIcon::Disabled);
  return icon;
}

QIcon iconOf(const MenuItem& item, const QMenu& menu) {
  if (const auto* shown = std::get_if<MenuSwatch>(&item.image)) {
    const auto fill = Material::of(menu.palette(), false).colour(shown->paint);
    return swatch(fill, item.isChecked, menu.devicePixelRatioF());
  }
  if (const auto* shown = std::get_if<MenuSymbol>(&item.image)) return symbol(shown->name, menu);
  return {};
}

QString keyText(const KeyEquivalent& key) {
  struct Name {
    std::uint64_t bit;
    const char* text;
  };
  QString text;
  for (const auto& [bit, name] :
       {Name{modifier::control, "Ctrl+"}, Name{modifier::option, "Alt+"},
        Name{modifier::shift, "Shift+"}, Name{modifier::command, "Super+"}})
    if (key.modifiers & bit) text += name;
  return text + QString::fromStdString(key.characters).toUpper();
}

// Text after a tab goes into the column of the keys.
QString textOf(const MenuItem& item, MenuKeys keys) {
  auto text = titleText(item.title).simplified();
  if (keys == MenuKeys::asText && !item.key.characters.empty()) text += '\t' + keyText(item.key);
  return text;
}

QKeySequence sequenceOf(const KeyEquivalent& key) {
  return key.characters.empty() ? QKeySequence()
                                : QKeySequence(keyText(key).replace("Super+", "Meta+"));
}

void add(QMenu& target, const MenuItem& item, const MenuSetting& setting) {
  if (item.isSeparator) {
    target.addSeparator();
    return;
  }
  auto* const action = target.addAction(iconOf(item, target), textOf(item, setting.keys));
  if (setting.keys == MenuKeys::asShortcuts) action->setShortcut(sequenceOf(item.key));
  action->setIconVisibleInMenu(true);
  action->setToolTip(toolTipText(item.tooltip));
  action->setCheckable(item.isChecked);
  action->setChecked(item.isChecked);
  action->setEnabled(item.isEnabled && (item.onChosen || item.submenu));
  if (item.submenu) {
    auto* const submenu = new QMenu(&target);
    nameWhenShown(*submenu, setting.hints);
    fillMenu(*submenu, *item.submenu, setting);
    action->setMenu(submenu);
  } else if (item.onChosen) {
    QObject::connect(
        action, &QAction::triggered, &setting.owner,
        [choose = setting.choose, onChosen = item.onChosen] { choose(onChosen); },
        Qt::QueuedConnection);
  }
}

}  // namespace

void nameWhenShown(QMenu& menu, const WindowHints& hints) {
  QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, &hints] {
    hints.setName(static_cast<xcb_window_t>(menu.winId()), "pellow-menu");
  });
}

void fillMenu(QMenu& target, const Menu& menu, const MenuSetting& setting) {
  target.setToolTipsVisible(true);
  for (const auto& item : menu.items) add(target, item, setting);
}

QMenu* makeMenu(const Menu& menu, const MenuSetting& setting) {
  auto* const result = new QMenu(&setting.owner);
  nameWhenShown(*result, setting.hints);
  fillMenu(*result, menu, setting);
  QObject::connect(result, &QMenu::aboutToHide, result, &QObject::deleteLater);
  return result;
}

}  // namespace pellow
