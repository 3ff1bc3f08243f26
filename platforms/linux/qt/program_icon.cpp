#include "platforms/linux/qt/program_icon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include "platforms/linux/qt/symbol_pixmap.h"

namespace pellow {

// Drawn here: whether Qt itself can read such a file depends on what is installed.
QIcon programIcon() {
  QIcon icon;
  QSvgRenderer renderer(QStringLiteral(":/pellow.svg"));
  for (const int side : {16, 24, 32, 48, 64, 128}) {
    auto pixmap = transparentPixmap(side, 1);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace pellow
