#include "platforms/linux/qt/qt_application.h"

#include <QScreen>

#include "platforms/linux/qt/panel_accessible.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/system/log_sink.h"

namespace pellow {
namespace {

// What Qt has to say goes where the program's own messages go, in their form.
void logMessageOfQt(QtMsgType type, const QMessageLogContext&, const QString& message) {
  static const Log log(makeLogSink());
  const auto text = message.toStdString();
  switch (type) {
    case QtDebugMsg:
    case QtInfoMsg:
      return log.info("Qt: {}", text);
    case QtWarningMsg:
      return log.warning("Qt: {}", text);
    case QtCriticalMsg:
    case QtFatalMsg:
      return log.error("Qt: {}", text);
  }
}

// Read by Qt when the application is made.
int& prepare(int& argumentCount) {
  qInstallMessageHandler(logMessageOfQt);
  qunsetenv("SESSION_MANAGER");
  // Widgets are drawn without OpenGL, whose libraries cost more than the rest of the program.
  if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) qputenv("QT_XCB_GL_INTEGRATION", "none");
  return argumentCount;
}

}  // namespace

QtApplication::QtApplication() : application_(prepare(count_), arguments_.data()) {
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setApplicationName("pellow");
  QGuiApplication::setDesktopFileName("pellow");
  ThemeIcon::chooseFallbacks();
  installPanelAccessibility();
}

double QtApplication::scale() const {
  const auto* const screen = QGuiApplication::primaryScreen();
  return screen ? screen->devicePixelRatio() : 1;
}

}  // namespace pellow
