#pragma once

#include "platform/symbolic_hot_keys.h"
#include "platforms/linux/x11/grabs.h"
#include "platforms/linux/x11/keyboard.h"

namespace pellow {

// X11 knows which keys are taken, but not by what.
class X11SymbolicHotKeys : public SymbolicHotKeys {
 public:
  X11SymbolicHotKeys(Keyboard& keyboard, const Grabs& grabs) : keyboard_(keyboard), grabs_(grabs) {}

  std::vector<SymbolicHotKey> all() const override { return {}; }
  bool isReserved(std::uint16_t keyCode, std::uint64_t modifierFlags) const override;

 private:
  Keyboard& keyboard_;
  const Grabs& grabs_;
};

}  // namespace pellow
