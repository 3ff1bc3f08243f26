#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "base/geometry.h"
#include "base/subscription.h"

namespace pellow {

// The bits of `KeyEvent::modifierFlags` that the program knows.
namespace modifier {
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
inline constexpr std::uint64_t all = shift | control | option | command;
}  // namespace modifier

struct KeyEvent {
  std::uint16_t keyCode = 0;  // virtual key code of the ANSI layout: 17 is the key of T
  std::uint64_t modifierFlags = 0;
  // Valid during the call; empty when it has none, and perhaps for global monitors.
  std::string_view charactersIgnoringModifiers;
};

// The keyboard and the pointer. A key press goes to the local monitors when this process has the
// keyboard, be it without a window, else to the global ones, never to both. A key held down counts
// once. Main thread.
class EventMonitors {
 public:
  virtual ~EventMonitors() = default;

  // Key presses meant for other applications, which get them unchanged all the same; none while the
  // screen is locked or somebody else has taken the whole keyboard (a field for a password on
  // macOS, any client that has grabbed it on X11). Nothing when the system allows no monitor.
  virtual std::optional<Subscription> addGlobalKeyDown(
      std::function<void(const KeyEvent&)> handler) = 0;

  // Key presses meant for this process, newest monitor first. A handler that answers false swallows
  // the event: no other monitor and no window gets it, nor its repeats.
  virtual std::optional<Subscription> addLocalKeyDown(
      std::function<bool(const KeyEvent&)> handler) = 0;

  // The pointer moved, with or without the left button down: over other applications (global), over
  // panels and windows of this process (local). Several movements may come as one;
  // `pointerLocation` tells where the pointer is by then.
  virtual std::optional<Subscription> addGlobalPointerMoved(std::function<void()> handler) = 0;
  virtual std::optional<Subscription> addLocalPointerMoved(std::function<void()> handler) = 0;

  // A button of the mouse, whichever, went down over another application.
  virtual std::optional<Subscription> addGlobalMouseDown(std::function<void()> handler) = 0;

  virtual AppKitPoint pointerLocation() const = 0;
};

}  // namespace pellow
