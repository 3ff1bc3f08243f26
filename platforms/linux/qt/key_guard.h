#pragma once

#include <xcb/xproto.h>

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QWindow>
#include <optional>

namespace pellow {

// Keeps from a window without text input the keys that were meant for another one: those pressed in
// the half second after it has got the keyboard, or after a character was typed, and those held
// down since before. By the time of the server, however late the program comes to them. The
// program's shortcuts are not concerned. Main thread, while there is a Qt application.
class KeyGuard final : public QObject, public QAbstractNativeEventFilter {
 public:
  explicit KeyGuard(QWindow& window);
  ~KeyGuard() override;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Key {
    quint32 scanCode = 0;
    xcb_timestamp_t time = 0;

    bool operator==(const Key&) const = default;
  };
  static Key keyOf(const QEvent& event);

  void askForTime();
  bool isForWindow(const Key& press);

  const xcb_window_t window_;
  const xcb_atom_t mark_;
  std::optional<xcb_timestamp_t> guardedSince_;  // nothing: it has just got the keyboard
  std::optional<Key> released_;                  // the latest
  std::optional<quint32> pressed_;  // the scan code of the latest press, if it was for the window
};

}  // namespace pellow
