#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/handler_list.h"
#include "platform/event_monitors.h"

namespace pellow::simulated {

class SimulatedSystem;

// Monitors that see what the user of the simulated desktop types and where the pointer goes.
class SimulatedEventMonitors final : public EventMonitors {
 public:
  explicit SimulatedEventMonitors(SimulatedSystem& system) : system_(system) {}

  std::optional<Subscription> addGlobalKeyDown(
      std::function<void(const KeyEvent&)> handler) override;
  std::optional<Subscription> addLocalKeyDown(
      std::function<bool(const KeyEvent&)> handler) override;
  std::optional<Subscription> addGlobalPointerMoved(std::function<void()> handler) override;
  std::optional<Subscription> addLocalPointerMoved(std::function<void()> handler) override;
  AppKitPoint pointerLocation() const override;

  // A window of the program has the keyboard although another application is the active one, as a
  // panel can. While the program is active, it has the keyboard anyway.
  void setProgramHasKeyboard(bool has) { programHasKeyboard_ = has; }
  bool programHasKeyboard() const;
  void press(std::uint16_t keyCode, std::uint64_t modifierFlags, std::string characters);
  void pointerMoved(bool isOverProgram) const;

 private:
  void deliver(const KeyEvent& event) const;

  SimulatedSystem& system_;
  HandlerList<void(const KeyEvent&)> global_;
  HandlerList<bool(const KeyEvent&)> local_;
  HandlerList<void()> globalPointer_;
  HandlerList<void()> localPointer_;
  bool programHasKeyboard_ = false;
};

}  // namespace pellow::simulated
