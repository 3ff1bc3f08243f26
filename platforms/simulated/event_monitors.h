#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "platform/event_monitors.h"
#include "platforms/simulated/observers.h"

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
  AppKitPoint pointerLocation() const override;

  // A window of the program has the keyboard although another application is the active one, as a
  // panel can. While the program is active, it has the keyboard anyway.
  void setProgramHasKeyboard(bool has) { programHasKeyboard_ = has; }
  bool programHasKeyboard() const;
  void press(std::uint16_t keyCode, std::uint64_t modifierFlags, std::string characters);
  void pointerMoved(bool isOverProgram) const;

 private:
  using LocalHandler = std::function<bool(const KeyEvent&)>;
  using LocalHandlers = std::list<std::shared_ptr<LocalHandler>>;

  void deliver(const KeyEvent& event) const;

  System& system_;
  Observers<const KeyEvent&> global_;
  Observers<> globalPointer_;
  Observers<> localPointer_;
  std::shared_ptr<LocalHandlers> local_ = std::make_shared<LocalHandlers>();  // newest first
  bool programHasKeyboard_ = false;
};

}  // namespace pellow::simulated
