#pragma once

#include <xcb/xproto.h>

#include <QAbstractNativeEventFilter>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <functional>

namespace pellow {

// Tells when there is a place for a status item: a host for StatusNotifierItems on the session bus,
// or the X11 tray. Either may come long after the program. Main thread, while there is a Qt
// application.
class TrayWatch final : public QAbstractNativeEventFilter {
 public:
  enum class Place { host, tray };

  // `onPlace` is called later, if there is a place already, and whenever one comes. When both kinds
  // come at once, it hears of the tray.
  explicit TrayWatch(std::function<void(Place)> onPlace);
  ~TrayWatch() override;

  // What there is now; a host is noticed a little later, and so is its end.
  bool hasHost() const { return hasHost_; }
  bool hasTray() const;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  void look();
  void hear(bool hasHost);

  std::function<void(Place)> onPlace_;
  xcb_atom_t manager_;
  xcb_atom_t traySelection_;
  bool mayBeNewTray_ = true;  // its window may have the number of the one before
  bool hasHost_ = false;
  QDBusServiceWatcher hosts_;
  QTimer news_;  // started by what may make or take a place
};

}  // namespace pellow
