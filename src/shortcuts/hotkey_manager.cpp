#include "shortcuts/hotkey_manager.h"

#include <utility>

namespace pellow {

void HotkeyManager::start() {
  stop();
  if (auto monitor =
          eventMonitors_.addGlobalKeyDown([this](const KeyEvent& event) { dispatch(event); }))
    monitors_.push_back(std::move(*monitor));
  if (auto monitor = eventMonitors_.addLocalKeyDown([this](const KeyEvent& event) {
        dispatch(event);
        return true;
      }))
    monitors_.push_back(std::move(*monitor));
}

void HotkeyManager::stop() { monitors_.clear(); }

// Runs on every key press in every application: no allocation unless an action fires.
void HotkeyManager::dispatch(const KeyEvent& event) {
  for (const auto action : allCases<ShortcutAction>()) {
    const auto& shortcut = shortcuts_.shortcut(action);
    if (event.keyCode != shortcut.keyCode) continue;
    if ((event.modifierFlags & modifier::all) != shortcut.modifiers) continue;
    log_.info("Shortcut fired: {}", rawValue(action));
    if (handler) handler(action);
    return;
  }
}

}  // namespace pellow
