#include "platforms/simulated/keyboard.h"

#include <utility>

#include "platforms/simulated/event_monitors.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

void Keyboard::press(std::uint16_t keyCode, std::uint64_t modifierFlags, std::string characters) {
  system_.mainLoop.post([this, keyCode, modifierFlags, text = std::move(characters)] {
    if (system_.state.areScreensLocked) return;
    const bool isLocal = belongsToProgram_ || system_.state.frontmost == system_.ownPid();
    monitors_.keyPressed({keyCode, modifierFlags, text}, isLocal);
  });
}

}  // namespace pellow::simulated
