#include "platforms/linux/qt/key_guard.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <cstdint>

#include "platforms/linux/qt/qt_display.h"

namespace pellow {
namespace {

constexpr std::int32_t guardTime = 500;  // milliseconds

// The server's clock begins again every seven weeks.
std::int32_t millisecondsBetween(xcb_timestamp_t earlier, xcb_timestamp_t later) {
  return static_cast<std::int32_t>(later - earlier);
}

// Space presses a button.
bool isCharacter(const QKeyEvent& press) {
  const auto text = press.text();
  return !text.isEmpty() && text.front().isPrint() && !text.front().isSpace();
}

}  // namespace

KeyGuard::KeyGuard(QWindow& window)
    : window_(static_cast<xcb_window_t>(window.winId())),
      mark_(internAtom(qtConnection(), "_PELLOW_FOCUSED")) {
  qApp->installNativeEventFilter(this);
  window.installEventFilter(this);
}

KeyGuard::~KeyGuard() { qApp->removeNativeEventFilter(this); }

// A change of the focus has no time; that of a property, right after it, has.
bool KeyGuard::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  switch (event->response_type & 0x7F) {
    case XCB_FOCUS_IN:
      if (reinterpret_cast<const xcb_focus_in_event_t*>(event)->event == window_) askForTime();
      break;
    case XCB_PROPERTY_NOTIFY: {
      const auto* const change = reinterpret_cast<const xcb_property_notify_event_t*>(event);
      if (change->window == window_ && change->atom == mark_) guardedSince_ = change->time;
      break;
    }
  }
  return false;
}

void KeyGuard::askForTime() {
  guardedSince_.reset();
  pressed_.reset();
  xcb_change_property(qtConnection(), XCB_PROP_MODE_APPEND, window_, mark_, XCB_ATOM_STRING, 8, 0,
                      nullptr);
  xcb_flush(qtConnection());
}

KeyGuard::Key KeyGuard::keyOf(const QEvent& event) {
  const auto& key = static_cast<const QKeyEvent&>(event);
  return {key.nativeScanCode(), static_cast<xcb_timestamp_t>(key.timestamp())};
}

bool KeyGuard::eventFilter(QObject*, QEvent* event) {
  if (event->type() == QEvent::KeyRelease) released_ = keyOf(*event);
  if (event->type() != QEvent::KeyPress) return false;
  const auto press = keyOf(*event);
  if (isCharacter(static_cast<const QKeyEvent&>(*event)) && guardedSince_)
    guardedSince_ = press.time;
  return !isForWindow(press);
}

// The server repeats a key that is held by a release and a press of the same moment.
bool KeyGuard::isForWindow(const Key& press) {
  if (released_ == press) return pressed_ == press.scanCode;
  pressed_.reset();
  if (guardedSince_ && millisecondsBetween(*guardedSince_, press.time) >= guardTime)
    pressed_ = press.scanCode;
  return pressed_.has_value();
}

}  // namespace pellow
