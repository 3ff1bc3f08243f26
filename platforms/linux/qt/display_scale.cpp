#include "platforms/linux/qt/display_scale.h"

#include <QGuiApplication>
#include <QScreen>
#include <utility>

namespace pellow {

DisplayScale::DisplayScale(std::function<void(double)> onChange)
    : onChange_(std::move(onChange)), scale_(now()) {
  QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &context_, [this] {
    follow();
    check();
  });
  follow();
}

double DisplayScale::now() {
  const auto* const screen = QGuiApplication::primaryScreen();
  return screen ? screen->devicePixelRatio() : 1;
}

// Qt tells of it before its windows have taken it over.
void DisplayScale::follow() {
  if (const auto* const screen = QGuiApplication::primaryScreen())
    QObject::connect(
        screen, &QScreen::logicalDotsPerInchChanged, &context_, [this] { check(); },
        Qt::QueuedConnection);
}

void DisplayScale::check() {
  if (std::exchange(scale_, now()) != scale_) onChange_(scale_);
}

}  // namespace pellow
