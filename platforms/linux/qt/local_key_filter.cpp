#include "platforms/linux/qt/local_key_filter.h"

#include <xcb/xcb.h>

#include <QCoreApplication>
#include <utility>

namespace pellow {
namespace {

constexpr xcb_timestamp_t shortestDelay = 50;  // milliseconds, until a key repeats

}  // namespace

LocalKeyFilter::LocalKeyFilter(Deliver deliver) : deliver_(std::move(deliver)) {
  qApp->installNativeEventFilter(this);
}

LocalKeyFilter::~LocalKeyFilter() { qApp->removeNativeEventFilter(this); }

bool LocalKeyFilter::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  const auto* const key = reinterpret_cast<const xcb_key_press_event_t*>(event);
  switch (event->response_type & 0x7F) {
    case XCB_KEY_PRESS:
      return !pressed(*key);
    case XCB_KEY_RELEASE:
      if (held_ && held_->keycode == key->detail) held_->releasedAt = key->time;
      return false;
    case XCB_FOCUS_OUT:  // the release goes elsewhere
      held_.reset();
      return false;
    default:
      return false;
  }
}

// A repeat comes as a release and a press of the same moment, when the key has been down for a
// while. Programs that type press keys that fast, too, but hold none.
bool LocalKeyFilter::pressed(const xcb_key_press_event_t& press) {
  const bool isRepeat = held_ && held_->keycode == press.detail &&
                        held_->releasedAt == press.time &&
                        press.time - held_->pressedAt >= shortestDelay;
  if (!isRepeat)
    held_ = Held{press.detail, !deliver_(press.detail, press.state), press.time, std::nullopt};
  return !held_->isSwallowed;
}

}  // namespace pellow
