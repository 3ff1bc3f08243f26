#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QPoint>
#include <QWidget>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platforms/linux/qt/display_scale.h"
#include "platforms/linux/qt/qt_application.h"
#include "platforms/linux/system/pollable_main_queue.h"
#include "platforms/linux/x11/x11_desktop.h"
#include "tests/harness/desktop_session.h"
#include "tests/harness/eventually.h"
#include "tests/harness/hearing.h"

// What Qt shows on a private desktop: the ports in this process, and a user with a real pointer and
// a real keyboard in front of them.

namespace pellow::desktop {

namespace {

class QtDesktopTest : public Hearing {
 protected:
  QtDesktopTest() {
    unsetenv("SESSION_MANAGER");  // of whoever runs the tests
    for (const auto& [name, value] : desktop.environment())
      if (name != "PATH") setenv(name.c_str(), value.c_str(), 1);
  }

  void SetUp() override { startQt(1); }

  // `scale` is pixels per point.
  void startQt(int scale) {
    setenv("QT_SCALE_FACTOR", std::to_string(scale).c_str(), 1);
    application.emplace();
    x11 = X11Desktop::open("", DisplayScale::now(), {}, log).value();
  }

  // Lets the program work until `holds()`.
  bool until(const std::function<bool()>& holds) override {
    return eventually([&] {
      work();
      return holds();
    });
  }

  void work() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    queue.runPending();
    x11->processEvents();
  }

  // The one window on the screen that has this name; 0 when there is none.
  WindowID shown(std::string_view name) const {
    const auto windows = desktop.shownWindows("pellow", name);
    return windows.empty() ? 0 : windows[0];
  }

  // Whether the window of this name has the keyboard and Qt knows both that and its place.
  bool isInFront(std::string_view name) const {
    const auto window = shown(name);
    const auto* const known = QApplication::activeWindow();
    if (window == 0 || !known || known->winId() != window) return false;
    const auto corner = known->mapToGlobal(QPoint(0, 0));
    return desktop.activeWindow() == window &&
           desktop.content(window) ==
               PixelRect{corner.x(), corner.y(), known->width(), known->height()};
  }

  // A point of a widget on the X screen.
  static QPoint placeOf(const QWidget& widget, QPoint point) { return widget.mapToGlobal(point); }
  static QPoint middleOf(const QWidget& widget) { return placeOf(widget, widget.rect().center()); }

  void click(QPoint point, std::uint8_t button = 1) { desktop.click(point.x(), point.y(), button); }

  void type(std::string_view letters) {
    for (const char letter : letters) desktop.type({static_cast<KeySym>(letter)});
  }

  DesktopSession desktop;
  Log log{[](LogLevel, std::string_view message) { ADD_FAILURE() << message; }};
  std::optional<QtApplication> application;
  PollableMainQueue queue;
  std::unique_ptr<X11Desktop> x11;
};

}  // namespace

}  // namespace pellow::desktop
