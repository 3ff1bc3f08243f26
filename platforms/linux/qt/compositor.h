#pragma once

#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <functional>
#include <utility>

namespace pellow {

// Whether a compositing manager (the owner of the selection _NET_WM_CM_S0) draws the windows of the
// X screen, so that they may be translucent. Main thread, while there is a Qt application.
class Compositor final : public QAbstractNativeEventFilter {
 public:
  Compositor();
  ~Compositor() override;

  bool isRunning() const { return isRunning_; }

  // Replaces the observer, which hears of every coming and going.
  void onChange(std::function<void()> observer) { observer_ = std::move(observer); }

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  bool askServer() const;

  xcb_connection_t* connection_;
  xcb_atom_t selection_ = XCB_ATOM_NONE;
  int ownerChanged_ = -1;  // the number of the event; -1 without the extension
  bool isRunning_ = false;
  std::function<void()> observer_;
};

}  // namespace pellow
