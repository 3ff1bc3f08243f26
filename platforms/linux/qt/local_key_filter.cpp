#include "platforms/linux/qt/local_key_filter.h"

#include <xcb/xcb.h>

#include <QCoreApplication>
#include <utility>

namespace pellow {

LocalKeyFilter::LocalKeyFilter(Deliver deliver) : deliver_(std::move(deliver)) {
  qApp->installNativeEventFilter(this);
}

LocalKeyFilter::~LocalKeyFilter() { qApp->removeNativeEventFilter(this); }

bool LocalKeyFilter::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  if ((event->response_type & 0x7F) != XCB_KEY_PRESS) return false;
  const auto* const press = reinterpret_cast<const xcb_key_press_event_t*>(event);
  return !deliver_(press->detail, press->state);
}

}  // namespace pellow
