#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>

namespace pellow {

// Sees the key presses for this process's windows before the windows do. Main thread, while there
// is a Qt application.
class LocalKeyFilter final : public QAbstractNativeEventFilter {
 public:
  // Gets the key code and the state of the event; false swallows it.
  using Deliver = std::function<bool(std::uint8_t keycode, std::uint16_t state)>;

  explicit LocalKeyFilter(Deliver deliver);
  ~LocalKeyFilter() override;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  Deliver deliver_;
};

}  // namespace pellow
