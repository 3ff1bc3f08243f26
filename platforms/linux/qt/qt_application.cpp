#include "platforms/linux/qt/qt_application.h"

#include <QScreen>

#include "platforms/linux/qt/picture_source.h"

namespace pellow {
namespace {

// Read by Qt when the application is made.
int& prepareEnvironment(int& argumentCount) {
  qunsetenv("SESSION_MANAGER");
  // Widgets are drawn without OpenGL, whose libraries cost more than the rest of the program.
  if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) qputenv("QT_XCB_GL_INTEGRATION", "none");
  return argumentCount;
}

}  // namespace

QtApplication::QtApplication() : application_(prepareEnvironment(count_), arguments_.data()) {
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setApplicationName("pellow");
  QGuiApplication::setDesktopFileName("pellow");
  ThemeIcon::chooseFallbacks();
}

double QtApplication::scale() const {
  const auto* const screen = QGuiApplication::primaryScreen();
  return screen ? screen->devicePixelRatio() : 1;
}

}  // namespace pellow
