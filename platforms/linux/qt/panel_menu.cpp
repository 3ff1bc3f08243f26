#include "platforms/linux/qt/panel_menu.h"

#include <QAction>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <variant>

#include "platform/event_monitors.h"

namespace pellow {
namespace {

constexpr int imageSide = 16;      // points
constexpr double swatchSide = 12;  // points
constexpr double swatchRadius = 3;

using Choose = std::function<void(const std::function<void()>&)>;

QPixmap transparentPixmap(double scale) {
  QPixmap pixmap(QSize(imageSide, imageSide) * scale);
  pixmap.setDevicePixelRatio(scale);
  pixmap.fill(Qt::transparent);
  return pixmap;
}

// On a picture of its own, for many styles show an item's picture in the place of its check mark.
void drawCheckMark(QPainter& painter, const QColor& below) {
  const bool isLight = qGray(below.rgb()) > 160;
  painter.setPen(
      QPen(isLight ? Qt::black : Qt::white, 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  const QPointF centre(imageSide / 2.0, imageSide / 2.0);
  painter.drawPolyline(QPolygonF{centre + QPointF(-3, 0.25), centre + QPointF(-0.75, 2.5),
                                 centre + QPointF(3, -2.25)});
}

QIcon swatch(const Colour& colour, bool isChecked, double scale) {
  auto pixmap = transparentPixmap(scale);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto component = [](double value) { return static_cast<float>(value); };
  const auto fill = QColor::fromRgbF(component(colour.red), component(colour.green),
                                     component(colour.blue), component(colour.alpha));
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

QPixmap symbolIn(const std::string& name, const QColor& colour, double scale) {
  auto pixmap = transparentPixmap(scale);
  QSvgRenderer renderer(":/symbols/" + QString::fromStdString(name) + ".svg");
  renderer.setAspectRatioMode(Qt::KeepAspectRatio);
  QPainter painter(&pixmap);
  const QRectF area(0, 0, imageSide, imageSide);
  renderer.render(&painter, area.adjusted(1, 1, -1, -1));
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(area, colour);
  return pixmap;
}

QIcon symbol(const std::string& name, const QMenu& menu) {
  const double scale = menu.devicePixelRatioF();
  const auto colour = [&](QPalette::ColorGroup group, QPalette::ColorRole role) {
    return menu.palette().color(group, role);
  };
  QIcon icon;
  icon.addPixmap(symbolIn(name, colour(QPalette::Active, QPalette::Text), scale));
  icon.addPixmap(symbolIn(name, colour(QPalette::Active, QPalette::HighlightedText), scale),
                 QIcon::Active);
  icon.addPixmap(symbolIn(name, colour(QPalette::Disabled, QPalette::Text), scale),
                 QIcon::Disabled);
  return icon;
}

QIcon iconOf(const MenuItem& item, const QMenu& menu) {
  if (const auto* colour = std::get_if<Colour>(&item.image))
    return swatch(*colour, item.isChecked, menu.devicePixelRatioF());
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

// An ampersand marks a letter to type, and what follows a tab stands in the column of the keys.
QString textOf(const MenuItem& item) {
  auto text = QString::fromStdString(item.title).simplified().replace('&', "&&");
  if (!item.key.characters.empty()) text += '\t' + keyText(item.key);
  return text;
}

void fill(QMenu& target, const Menu& menu, QWidget& owner, const WindowHints& hints,
          const Choose& choose);

void add(QMenu& target, const MenuItem& item, QWidget& owner, const WindowHints& hints,
         const Choose& choose) {
  if (item.isSeparator) {
    target.addSeparator();
    return;
  }
  auto* const action = target.addAction(iconOf(item, target), textOf(item));
  action->setIconVisibleInMenu(true);
  action->setToolTip(QString::fromStdString(item.tooltip));
  action->setCheckable(item.isChecked);
  action->setChecked(item.isChecked);
  action->setEnabled(item.isEnabled && (item.onChosen || item.submenu));
  if (item.submenu) {
    auto* const submenu = new QMenu(&target);
    fill(*submenu, *item.submenu, owner, hints, choose);
    action->setMenu(submenu);
  } else if (item.onChosen) {
    QObject::connect(
        action, &QAction::triggered, &owner,
        [choose, onChosen = item.onChosen] { choose(onChosen); }, Qt::QueuedConnection);
  }
}

void fill(QMenu& target, const Menu& menu, QWidget& owner, const WindowHints& hints,
          const Choose& choose) {
  target.setToolTipsVisible(true);
  for (const auto& item : menu.items) add(target, item, owner, hints, choose);
  QObject::connect(&target, &QMenu::aboutToShow, &target, [&target, &hints] {
    hints.setName(static_cast<xcb_window_t>(target.winId()), "pellow-menu");
  });
}

}  // namespace

QMenu* makeMenu(const Menu& menu, QWidget& owner, const WindowHints& hints, const Choose& choose) {
  auto* const result = new QMenu(&owner);
  fill(*result, menu, owner, hints, choose);
  QObject::connect(result, &QMenu::aboutToHide, result, &QObject::deleteLater);
  return result;
}

}  // namespace pellow
