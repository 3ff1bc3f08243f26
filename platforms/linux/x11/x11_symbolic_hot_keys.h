#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/symbolic_hot_keys.h"
#include "platforms/linux/x11/desktop_shortcut.h"
#include "platforms/linux/x11/grabs.h"
#include "platforms/linux/x11/keyboard.h"

namespace pellow {

// X11 knows which keys are taken, but not by what; settings of the desktop may tell.
class X11SymbolicHotKeys : public SymbolicHotKeys {
 public:
  // `settings` answers what is written there.
  X11SymbolicHotKeys(Keyboard& keyboard, const Grabs& grabs,
                     std::function<std::vector<DesktopShortcut>()> settings)
      : keyboard_(keyboard), grabs_(grabs), settings_(std::move(settings)) {}

  std::vector<SymbolicHotKey> all() const override { return {}; }
  std::optional<std::string> reservedBy(std::uint16_t keyCode,
                                        std::uint64_t modifierFlags) const override;

 private:
  bool isReserved(std::uint16_t keyCode, std::uint64_t modifierFlags) const;
  std::string feature(std::uint16_t keyCode, std::uint64_t modifierFlags) const;

  Keyboard& keyboard_;
  const Grabs& grabs_;
  std::function<std::vector<DesktopShortcut>()> settings_;
};

}  // namespace pellow
