#include "platforms/linux/qt/tray_watch.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>

#include "platforms/linux/qt/qt_display.h"

namespace pellow {
namespace {

// Keeps the lists of items and hosts.
constexpr auto watcher = "org.kde.StatusNotifierWatcher";
constexpr auto watcherPath = "/StatusNotifierWatcher";

}  // namespace

// The watcher may come before any host.
TrayWatch::TrayWatch(std::function<void(Place)> onPlace)
    : onPlace_(std::move(onPlace)),
      manager_(internAtom(qtConnection(), "MANAGER")),
      traySelection_(internAtom(qtConnection(), "_NET_SYSTEM_TRAY_S0")),
      hosts_(watcher, QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForOwnerChange) {
  news_.setSingleShot(true);
  QObject::connect(&news_, &QTimer::timeout, &news_, [this] { look(); });
  QObject::connect(&hosts_, &QDBusServiceWatcher::serviceOwnerChanged, &news_,
                   [this] { news_.start(); });
  for (const auto* const change :
       {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    QDBusConnection::sessionBus().connect(watcher, watcherPath, watcher, change, &news_,
                                          SLOT(start()));
  qApp->installNativeEventFilter(this);
  news_.start();
}

TrayWatch::~TrayWatch() { qApp->removeNativeEventFilter(this); }

bool TrayWatch::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE) return false;
  const auto& told = *static_cast<const xcb_client_message_event_t*>(message);
  if (told.type == manager_ && told.data.data32[1] == traySelection_) {
    mayBeNewTray_ = true;
    news_.start();
  }
  return false;
}

void TrayWatch::look() {
  const auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return hear(false);
  auto question = QDBusMessage::createMethodCall(watcher, watcherPath,
                                                 "org.freedesktop.DBus.Properties", "Get");
  question << watcher << "IsStatusNotifierHostRegistered";
  question.setAutoStartService(false);
  auto* const call = new QDBusPendingCallWatcher(bus.asyncCall(question), &news_);
  QObject::connect(call, &QDBusPendingCallWatcher::finished, &news_, [this, call] {
    call->deleteLater();
    const QDBusPendingReply<QDBusVariant> answer = *call;
    hear(answer.isValid() && answer.value().variant().toBool());
  });
}

bool TrayWatch::hasTray() const {
  const Reply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
      qtConnection(), xcb_get_selection_owner(qtConnection(), traySelection_), nullptr));
  return reply && reply->owner != XCB_WINDOW_NONE;
}

void TrayWatch::hear(bool hasHost) {
  hasHost_ = hasHost;
  const bool isNewTray = std::exchange(mayBeNewTray_, false) && hasTray();
  if (hasHost || isNewTray) onPlace_(isNewTray ? Place::tray : Place::host);
}

}  // namespace pellow
