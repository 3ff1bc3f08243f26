#include "platforms/linux/qt/view_painter.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QImage>
#include <QLinearGradient>
#include <QSvgRenderer>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <vector>

#include "platforms/linux/qt/view_geometry.h"

namespace pellow {
namespace {

// What takes long to draw, as last drawn; empty when it must be drawn anew.
struct Drawing final : ViewNode::NativePart {
  std::shared_ptr<const PictureSource::Scaled> picture;
  QPixmap pixmap;

  void lookChanged() override {
    picture.reset();
    pixmap = {};
  }
};

QFont fontOf(const Label& label) {
  auto font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  font.setPixelSize(static_cast<int>(std::lround(label.pointSize)));
  font.setWeight(label.weight == FontWeight::medium ? QFont::Medium : QFont::Normal);
  return font;
}

double rotationOf(const QTransform& transform) {
  return std::atan2(transform.m12(), transform.m11()) * 180 / std::numbers::pi;
}

// One pass of a running average over a row or a column.
void average(std::uint8_t* values, int count, int stride, int radius) {
  std::vector<std::uint8_t> before(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) before[static_cast<std::size_t>(i)] = values[i * stride];
  const int width = 2 * radius + 1;
  int sum = 0;
  const auto at = [&](int i) {
    return i >= 0 && i < count ? before[static_cast<std::size_t>(i)] : std::uint8_t{0};
  };
  for (int i = -radius; i <= radius; ++i) sum += at(i);
  for (int i = 0; i < count; ++i) {
    values[i * stride] = static_cast<std::uint8_t>(sum / width);
    sum += at(i + radius + 1) - at(i - radius);
  }
}

// Two averages come close to a Gaussian blur of that deviation.
void blur(QImage& alpha, int radius) {
  if (radius < 1) return;
  const int stride = static_cast<int>(alpha.bytesPerLine());
  for (int pass = 0; pass < 2; ++pass) {
    for (int y = 0; y < alpha.height(); ++y) average(alpha.scanLine(y), alpha.width(), 1, radius);
    for (int x = 0; x < alpha.width(); ++x)
      average(alpha.bits() + x, alpha.height(), stride, radius);
  }
}

QImage shadowOf(const QImage& image, const Shadow& shadow, double scale) {
  auto alpha = image.convertToFormat(QImage::Format_Alpha8);
  blur(alpha, static_cast<int>(std::lround(shadow.blurRadius * scale / 2)));
  QImage result(image.size(), QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < result.height(); ++y) {
    const auto* from = alpha.constScanLine(y);
    auto* to = reinterpret_cast<QRgb*>(result.scanLine(y));
    for (int x = 0; x < result.width(); ++x)
      to[x] = qRgba(0, 0, 0, static_cast<int>(std::lround(from[x] * shadow.opacity)));
  }
  return result;
}

QImage transparentImage(QSize size) {
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

}  // namespace

void ViewPainter::draw(ViewNode& node, const QTransform& toPanel, bool isPressed) {
  stretch_ = {std::hypot(toPanel.m11(), toPanel.m12()), std::hypot(toPanel.m21(), toPanel.m22())};
  const bool needsPixmap = node.look.shadow || std::holds_alternative<Symbol>(node.look.content);
  if (needsPixmap) {
    drawAsPixmap(node, toPanel);
  } else {
    painter_.setWorldTransform(toPanel);
    drawContent(node);
  }
  if (!node.look.highlightsOnHover) return;
  painter_.setWorldTransform(toPanel);
  drawHighlight(node, isPressed);
}

void ViewPainter::drawContent(ViewNode& node) {
  const auto& content = node.look.content;
  if (const auto* picture = std::get_if<Picture>(&content)) return drawPicture(node, *picture);
  if (const auto* symbol = std::get_if<Symbol>(&content)) return drawSymbol(node, *symbol);
  if (const auto* label = std::get_if<Label>(&content)) return drawLabel(node, *label);
  if (std::holds_alternative<Backdrop>(content)) return drawBackdrop(node);
  if (const auto* fill = std::get_if<Fill>(&content)) {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(material_.colour(fill->paint));
    drawRounded(boundsOf(node), node.look.cornerRadius);
  }
}

// The radius is the panel's, even while its content is drawn scaled.
void ViewPainter::drawRounded(const QRectF& area, double radius) {
  painter_.drawRoundedRect(area, radius / stretch_.width(), radius / stretch_.height());
}

void ViewPainter::drawRounded(const QPixmap& pixmap, const QRectF& area, double radius) {
  if (pixmap.isNull()) return;
  QBrush brush(pixmap);
  brush.setTransform(QTransform::fromTranslate(area.x(), area.y())
                         .scale(area.width() / pixmap.width(), area.height() / pixmap.height()));
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(brush);
  drawRounded(area, radius);
}

void ViewPainter::drawPicture(ViewNode& node, const Picture& picture) {
  const auto bounds = boundsOf(node);
  const QSize side = (bounds.size() * scale_).toSize();
  if (side.isEmpty()) return;
  auto& shown = node.native<Drawing>().picture;
  if (!shown) shown = pictures_.scaled(picture.image, side);
  const QSizeF size = QSizeF(shown->pixmap.size()) / scale_;
  QPointF origin = bounds.center() - QPointF(size.width() / 2, size.height() / 2);
  // On whole device pixels the picture stays sharp.
  const auto& transform = painter_.worldTransform();
  if (transform.type() <= QTransform::TxTranslate) {
    const auto corner = transform.map(origin) * scale_;
    origin += (QPointF(std::round(corner.x()), std::round(corner.y())) - corner) / scale_;
  }
  const QRectF area(origin, size);
  if (node.look.cornerRadius > 0) return drawRounded(shown->pixmap, area, node.look.cornerRadius);
  painter_.drawPixmap(area, shown->pixmap, QRectF(shown->pixmap.rect()));
}

void ViewPainter::drawSymbol(const ViewNode& node, const Symbol& symbol) {
  QSvgRenderer renderer(":/symbols/" + QString::fromStdString(symbol.name) + ".svg");
  renderer.setAspectRatioMode(Qt::KeepAspectRatio);
  renderer.render(&painter_, boundsOf(node));
}

void ViewPainter::drawLabel(const ViewNode& node, const Label& label) {
  const auto font = fontOf(label);
  const auto bounds = boundsOf(node);
  // Another application's title may hold line breaks.
  const auto text = QString::fromStdString(label.text).simplified();
  painter_.setFont(font);
  painter_.setPen(material_.colour(label.paint));
  const auto alignment =
      label.alignment == TextAlignment::centre ? Qt::AlignHCenter : Qt::AlignLeft;
  painter_.drawText(bounds, alignment | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip,
                    QFontMetricsF(font).elidedText(text, Qt::ElideRight, bounds.width()));
}

// The rim lies on the outermost row of device pixels, the gleam on the row inside it.
void ViewPainter::drawBackdrop(const ViewNode& node) {
  const double hair = 1 / scale_;
  const double radius = node.look.cornerRadius;
  const auto bounds = boundsOf(node);
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(material_.backdrop);
  painter_.drawRoundedRect(bounds, radius, radius);

  painter_.setBrush(Qt::NoBrush);
  QLinearGradient light(bounds.topLeft(), bounds.bottomLeft());
  light.setColorAt(0, material_.gleam);
  auto faded = material_.gleam;
  faded.setAlphaF(faded.alphaF() / 3);
  light.setColorAt(1, faded);
  painter_.setPen(QPen(QBrush(light), hair));
  const auto inner = bounds.adjusted(1.5 * hair, 1.5 * hair, -1.5 * hair, -1.5 * hair);
  painter_.drawRoundedRect(inner, std::max(radius - 1.5 * hair, 0.0),
                           std::max(radius - 1.5 * hair, 0.0));
  painter_.setPen(QPen(material_.rim, hair));
  const auto outer = bounds.adjusted(hair / 2, hair / 2, -hair / 2, -hair / 2);
  painter_.drawRoundedRect(outer, std::max(radius - hair / 2, 0.0),
                           std::max(radius - hair / 2, 0.0));
}

void ViewPainter::drawHighlight(const ViewNode& node, bool isPressed) {
  auto colour = isPressed ? material_.pressed : material_.hover;
  colour.setAlphaF(static_cast<float>(colour.alphaF() * node.highlight));
  if (colour.alpha() == 0) return;
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(colour);
  drawRounded(boundsOf(node), node.look.cornerRadius);
}

void ViewPainter::drawAsPixmap(ViewNode& node, const QTransform& toPanel) {
  auto& pixmap = node.native<Drawing>().pixmap;
  if (pixmap.isNull()) pixmap = makePixmap(node, rotationOf(toPanel));
  const auto centre = toPanel.map(boundsOf(node).center());
  const QSizeF size = QSizeF(pixmap.size()) / scale_;
  const auto corner = (centre - QPointF(size.width() / 2, size.height() / 2)) * scale_;
  const QPointF origin(std::round(corner.x()), std::round(corner.y()));
  painter_.setWorldTransform({});
  painter_.drawPixmap(QRectF(origin / scale_, size), pixmap, QRectF(pixmap.rect()));
}

// Turned while it is drawn: turning pixels afterwards would blur them.
QPixmap ViewPainter::makePixmap(ViewNode& node, double rotation) {
  QTransform turn;
  turn.rotate(rotation);
  const auto extent = turn.mapRect(extentOf(node).translated(-boundsOf(node).center()));
  const double reach = 2 * std::max({-extent.left(), extent.right(), -extent.top(),
                                     extent.bottom()});  // symmetric about the centre
  const int side = std::max(static_cast<int>(std::ceil(reach * scale_)), 1);

  auto content = transparentImage({side, side});
  {
    QPainter painter(&content);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(side / 2.0, side / 2.0);
    painter.scale(scale_, scale_);
    painter.rotate(rotation);
    painter.translate(-boundsOf(node).center());
    ViewPainter(painter, material_, pictures_, scale_).drawContent(node);
    if (const auto* symbol = std::get_if<Symbol>(&node.look.content)) {
      painter.resetTransform();
      painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
      painter.fillRect(content.rect(), material_.colour(symbol->paint));
    }
  }
  if (!node.look.shadow) return QPixmap::fromImage(std::move(content));

  const auto& shadow = *node.look.shadow;
  auto result = transparentImage(content.size());
  QPainter painter(&result);
  painter.drawImage(QPointF(shadow.dx, -shadow.dy) * scale_, shadowOf(content, shadow, scale_));
  painter.drawImage(0, 0, content);
  painter.end();
  return QPixmap::fromImage(std::move(result));
}

}  // namespace pellow
