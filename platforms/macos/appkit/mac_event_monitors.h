#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>
#include <functional>
#include <optional>

#include "base/handler_list.h"
#include "platform/event_monitors.h"

namespace pellow {

// One monitor of AppKit's for each kind of event, and our own chain of handlers behind it, as the
// order of AppKit's is not known. Listens to nothing while nobody monitors, once the next event has
// come. Keys typed while an application has secure input are seen by nobody.
class MacEventMonitors final : public EventMonitors {
 public:
  std::optional<Subscription> addGlobalKeyDown(
      std::function<void(const KeyEvent&)> handler) override;
  std::optional<Subscription> addLocalKeyDown(
      std::function<bool(const KeyEvent&)> handler) override;
  std::optional<Subscription> addGlobalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addLocalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addGlobalMouseDown(std::function<void()> handler) override;
  AppKitPoint pointerLocation() const override;

  // The pointer moved over a panel: while the application is not active, only the panel is told.
  void pointerMovedOverPanel() const { localPointer_.notify(); }

 private:
  // AppKit's token of a monitor, removed once.
  class Monitor {
   public:
    Monitor() = default;
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;
    ~Monitor() { end(); }

    // Takes the place of the former; false when AppKit gave none.
    bool begin(id token);
    void end();

   private:
    id token_ = nil;
  };

  void globalKeyDown(NSEvent* event) noexcept;
  NSEvent* localKeyDown(NSEvent* event) noexcept;
  void pointerActed(const HandlerList<void()>& handlers, Monitor& monitor) noexcept;

  HandlerList<void(const KeyEvent&)> globalKeys_;
  HandlerList<bool(const KeyEvent&)> localKeys_;
  HandlerList<void()> globalPointer_;
  HandlerList<void()> localPointer_;
  HandlerList<void()> globalMouseDown_;
  std::optional<std::uint16_t> swallowedKey_;  // the latest local press, if a handler swallowed it
  // They go first: their blocks point at the rest.
  Monitor globalKeyMonitor_;
  Monitor localKeyMonitor_;
  Monitor globalPointerMonitor_;
  Monitor localPointerMonitor_;
  Monitor globalMouseDownMonitor_;
};

}  // namespace pellow
