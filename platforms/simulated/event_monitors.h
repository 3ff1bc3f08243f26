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

  // Whether any can be added from now on.
  void allow(bool allowed);
  // Local ones hear what is for the program, global ones the rest.
  void keyPressed(const KeyEvent& event, bool isLocal) const;
  void pointerMoved(bool isLocal) const;

 private:
  using LocalHandler = std::function<bool(const KeyEvent&)>;
  using LocalHandlers = std::list<std::shared_ptr<LocalHandler>>;

  System& system_;
  Observers<const KeyEvent&> global_;
  Observers<> globalPointer_;
  Observers<> localPointer_;
  std::shared_ptr<LocalHandlers> local_ = std::make_shared<LocalHandlers>();  // newest first
};

}  // namespace pellow::simulated
