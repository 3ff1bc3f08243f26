#include "platforms/linux/qt/qt_application.h"

#include <QPlatformSurfaceEvent>
#include <QSessionManager>
#include <QWindow>

#include "platforms/linux/qt/panel_accessible.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/system/log_sink.h"
#include "platforms/linux/system/session_manager_link.h"

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
  outliveSessionManager();
  // No OpenGL for widgets: its libraries cost more than the rest of the program.
  if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) qputenv("QT_XCB_GL_INTEGRATION", "none");
  // With XInput 2 Qt asks the server for the state of wheels whenever the pointer enters a window,
  // and waits for the answer. Nothing here scrolls more smoothly than by steps.
  if (!qEnvironmentVariableIsSet("QT_XCB_NO_XI2")) qputenv("QT_XCB_NO_XI2", "1");
  return argumentCount;
}

}  // namespace

QtApplication::QtApplication() : application_(prepare(count_), arguments_.data()) {
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setApplicationName("pellow");
  QGuiApplication::setDesktopFileName("pellow");
  ThemeIcon::chooseFallbacks();
  installPanelAccessibility();
  application_.installEventFilter(&filter_);
  // Only in these signals there is a session manager to talk to; the first comes at once.
  const auto neverRestart = [](QSessionManager& session) {
    session.setRestartHint(QSessionManager::RestartNever);
  };
  QObject::connect(&application_, &QGuiApplication::saveStateRequest, &filter_, neverRestart,
                   Qt::DirectConnection);
  QObject::connect(
      &application_, &QGuiApplication::commitDataRequest, &filter_,
      [this, neverRestart](QSessionManager& session) {
        neverRestart(session);
        if (onSaveSession) onSaveSession();
      },
      Qt::DirectConnection);
}

bool QtApplication::Filter::eventFilter(QObject* object, QEvent* event) {
  // The end of the session. Qt would ask every window to close first.
  if (event->type() == QEvent::Quit && object == QCoreApplication::instance()) {
    QCoreApplication::exit();
    return true;
  }
  // With a scale factor Qt gives window managers a negative base size, which fluxbox takes for a
  // window of 65,534 pixels.
  auto* const window =
      event->type() == QEvent::PlatformSurface ? qobject_cast<QWindow*>(object) : nullptr;
  if (window && static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
                    QPlatformSurfaceEvent::SurfaceCreated)
    window->setBaseSize({0, 0});
  return false;
}

}  // namespace pellow
