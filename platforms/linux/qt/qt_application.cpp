#include "platforms/linux/qt/qt_application.h"

#include <QPlatformSurfaceEvent>
#include <QWindow>

#include "platforms/linux/qt/panel_accessible.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/system/log_sink.h"

namespace pellow {
namespace {

// Qt's messages go where the program's own go, in the same form.
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
  // No OpenGL for widgets: its libraries cost more than the rest of the program.
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
  application_.installEventFilter(&windowFilter_);
}

// With a scale factor Qt gives window managers a negative base size, which fluxbox takes for a
// window of 65,534 pixels.
bool QtApplication::WindowFilter::eventFilter(QObject* object, QEvent* event) {
  auto* const window =
      event->type() == QEvent::PlatformSurface ? qobject_cast<QWindow*>(object) : nullptr;
  if (window && static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
                    QPlatformSurfaceEvent::SurfaceCreated)
    window->setBaseSize({0, 0});
  return false;
}

}  // namespace pellow
