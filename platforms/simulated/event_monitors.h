#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/handler_list.h"
#include "platform/event_monitors.h"

namespace pellow::simulated {

class System;

// Monitors that see what the user of the simulated desktop types and where the pointer goes.
class EventMonitors final : public pellow::EventMonitors {
 public:
  explicit EventMonitors(System& system) : system_(system) {}

  std::optional<Subscription> addGlobalKeyDown(
      std::function<void(const KeyEvent&)> handler) override;
  std::optional<Subscription> addLocalKeyDown(
      std::function<bool(const KeyEvent&)> handler) override;
  std::optional<Subscription> addGlobalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addLocalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addGlobalMouseDown(std::function<void()> handler) override;
  AppKitPoint pointerLocation() const override;

  // Whether any can be added from now on.
  void allow(bool allowed);
  // Local monitors hear what is for the program, global ones the rest.
  void keyPressed(const KeyEvent& event, bool isLocal) const;
  void pointerMoved(bool isLocal) const;
  void mouseDownElsewhere() const { globalMouseDown_.notify(); }

 private:
  System& system_;
  HandlerList<void(const KeyEvent&)> global_;
  HandlerList<bool(const KeyEvent&)> local_;
  HandlerList<void()> globalPointer_;
  HandlerList<void()> localPointer_;
  HandlerList<void()> globalMouseDown_;
};

}  // namespace pellow::simulated
