#include "platforms/linux/qt/picture_source.h"

#include <QFileInfo>
#include <QImage>
#include <QStandardPaths>
#include <algorithm>
#include <cstddef>

#include "platforms/linux/x11/pixel_image.h"

namespace pellow {
namespace {

constexpr std::size_t fewest = 16;      // pictures worth forgetting
constexpr double nominalIconSide = 32;  // points, for icons of any size

// Shrinking keeps an icon sharp, growing does not.
QPixmap atLeast(const QIcon& icon, QSize side) {
  const auto pixmap = icon.pixmap(side, 1.0);
  if (pixmap.width() >= side.width() || pixmap.height() >= side.height()) return pixmap;
  return icon.pixmap(side * 2, 1.0);
}

QImage pixelsOf(const Image::Object& object, QSize side) {
  if (const auto* theme = dynamic_cast<const ThemeIcon*>(&object))
    return atLeast(theme->icon(), side).toImage();
  if (const auto* pixels = dynamic_cast<const PixelImage*>(&object))
    return QImage(reinterpret_cast<const uchar*>(pixels->pixels().data()), pixels->width(),
                  pixels->height(), QImage::Format_ARGB32);
  return {};
}

// An icon theme that is probably installed; "hicolor" alone holds only applications' own icons.
QString likelyTheme() {
  const auto folders = QIcon::themeSearchPaths();
  for (const auto* name : {"Adwaita", "breeze", "Papirus", "elementary-xfce", "Yaru", "gnome"})
    for (const auto& folder : folders)
      if (QFileInfo::exists(folder + '/' + name + "/index.theme")) return name;
  return "hicolor";
}

}  // namespace

std::optional<Image> ThemeIcon::load(const std::string& name) {
  const auto text = QString::fromStdString(name);
  auto icon = QFileInfo(text).isAbsolute() ? QIcon(text) : QIcon::fromTheme(text);
  if (icon.availableSizes().isEmpty() && icon.pixmap(1, 1).isNull()) {
    // "firefox.png" in a folder of pictures.
    const auto withoutEnding = QFileInfo(text).completeBaseName();
    if (QFileInfo(text).isAbsolute() || withoutEnding == text) return std::nullopt;
    return load(withoutEnding.toStdString());
  }
  return Image(std::make_shared<ThemeIcon>(std::move(icon)));
}

void ThemeIcon::chooseFallbacks() {
  QIcon::setFallbackThemeName(likelyTheme());
  auto folders = QIcon::fallbackSearchPaths();
  folders += QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, "pixmaps",
                                       QStandardPaths::LocateDirectory);
  QIcon::setFallbackSearchPaths(folders);
}

Size ThemeIcon::size() const { return {nominalIconSide, nominalIconSide}; }

std::shared_ptr<const PictureSource::Scaled> PictureSource::scaled(const Image& image, QSize side) {
  const Key key{&image.object(), side.width(), side.height()};
  if (const auto found = known_.find(key); found != known_.end())
    if (auto picture = found->second.lock()) return picture;

  auto pixels = pixelsOf(image.object(), side);
  if (!pixels.isNull())
    pixels = pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                 .scaled(side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  forgetExpired();
  auto picture = std::make_shared<const Scaled>(image, QPixmap::fromImage(std::move(pixels)));
  known_[key] = picture;
  return picture;
}

// Only when their number has doubled: a strip may show a thousand new icons at once.
void PictureSource::forgetExpired() {
  if (known_.size() < lookAgainAt_) return;
  std::erase_if(known_, [](const auto& entry) { return entry.second.expired(); });
  lookAgainAt_ = std::max(fewest, 2 * known_.size());
}

}  // namespace pellow
