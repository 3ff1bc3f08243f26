#include "platforms/simulated/screens.h"

namespace pellow::simulated {

void Screens::plug(DisplayID display, AppKitRect frame) {
  system_.changeScreens([&](DesktopState& state) { state.plug(makeScreen(display, frame)); });
}

void Screens::unplug(DisplayID display) {
  system_.changeScreens([&](DesktopState& state) { state.unplug(display); });
}

void Screens::moveDock(DockSide side) {
  system_.changeScreens([&](DesktopState& state) { state.moveDock(side); });
}

}  // namespace pellow::simulated
