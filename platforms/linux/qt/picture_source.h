#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include "platform/image.h"

namespace pellow {

// An icon of the icon theme or of a file, drawn by Qt in whatever size is asked for.
class ThemeIcon final : public Image::Object {
 public:
  // `name` is one of the theme ("firefox") or a file ("/opt/x/x.png"). Nothing when there is none.
  static std::optional<Image> load(const std::string& name);

  // Where icons come from when the desktop names no theme.
  static void chooseFallbacks();

  explicit ThemeIcon(QIcon icon) : icon_(std::move(icon)) {}

  Size size() const override;
  const QIcon& icon() const { return icon_; }

 private:
  QIcon icon_;
};

// Images as pixmaps, each made once for all views that show it in the same size. Main thread.
class PictureSource {
 public:
  // A picture kept for as long as somebody shows it.
  struct Scaled {
    Image image;
    QPixmap pixmap;
  };

  // The image scaled into `side` device pixels with its proportions kept. A null pixmap when it
  // cannot be drawn.
  std::shared_ptr<const Scaled> scaled(const Image& image, QSize side);

 private:
  using Key = std::tuple<const Image::Object*, int, int>;

  void forgetExpired();

  std::map<Key, std::weak_ptr<const Scaled>> known_;
  std::size_t lookAgainAt_ = 0;
};

}  // namespace pellow
