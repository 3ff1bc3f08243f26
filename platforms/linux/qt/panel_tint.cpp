#include "platforms/linux/qt/panel_tint.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <algorithm>
#include <cstdint>
#include <span>

#include "platforms/linux/qt/screen_geometry.h"

namespace pellow {
namespace {

constexpr int lightGrey = 140;

QImage greysOf(const PixelRect& part) {
  auto* const screen = QGuiApplication::primaryScreen();
  if (!screen) return {};
  const auto area = toQt(part).translated(-screen->geometry().topLeft());
  const auto picture = screen->grabWindow(0, area.x(), area.y(), area.width(), area.height());
  return picture.toImage().convertToFormat(QImage::Format_Grayscale8);
}

}  // namespace

std::optional<QColor> tintOn(const std::vector<PixelRect>& parts) {
  std::int64_t all = 0;
  std::int64_t light = 0;
  for (const auto& part : parts) {
    const auto greys = greysOf(part);
    for (int y = 0; y < greys.height(); ++y) {
      const std::span row(greys.constScanLine(y), static_cast<std::size_t>(greys.width()));
      light += std::ranges::count_if(row, [](auto grey) { return grey > lightGrey; });
      all += greys.width();
    }
  }
  if (all == 0) return std::nullopt;
  return 2 * light > all ? QColor(0x2e, 0x2e, 0x2e) : QColor(0xf2, 0xf2, 0xf2);
}

}  // namespace pellow
