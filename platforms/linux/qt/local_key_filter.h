#pragma once

#include <xcb/xproto.h>

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>
#include <optional>

namespace pellow {

// Sees the key presses for this process's windows before the windows do. Main thread, while there
// is a Qt application.
class LocalKeyFilter final : public QAbstractNativeEventFilter {
 public:
  // Gets the key code and the state of the event; false swallows it. Repeats of a key that is held
  // down share the fate of its press.
  using Deliver = std::function<bool(std::uint8_t keycode, std::uint16_t state)>;

  explicit LocalKeyFilter(Deliver deliver);
  ~LocalKeyFilter() override;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  struct Held {
    std::uint8_t keycode = 0;
    bool isSwallowed = false;
    xcb_timestamp_t pressedAt = 0;
    std::optional<xcb_timestamp_t> releasedAt;
  };

  bool pressed(const xcb_key_press_event_t& press);

  Deliver deliver_;
  std::optional<Held> held_;  // the latest
};

}  // namespace pellow
