#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "platforms/linux/x11/x11_connection.h"

namespace pellow {

// What the X key codes of the keyboard mean to the program. Looking up allocates nothing.
class KeyboardMap {
 public:
  struct Key {
    // The virtual key code of the ANSI layout, by the place of the key on the keyboard; absent for
    // modifiers and keys that no Mac has.
    std::optional<std::uint16_t> keyCode;
    // What it types in the two layouts of the keyboard, without and with Shift.
    std::array<std::array<std::string, 2>, 2> characters;
  };

  // Reads it from the X server; nothing when the server does not answer in time.
  static std::optional<KeyboardMap> read(X11Connection& connection);

  const Key& key(std::uint8_t xKeycode) const { return keys_[xKeycode]; }
  const std::string& characters(std::uint8_t xKeycode, unsigned group, bool shift) const {
    return keys_[xKeycode].characters[group == 1 ? 1 : 0][shift ? 1 : 0];
  }

  // The modifier flags of X modifier bits: Command is Super, Option is Alt, wherever they are.
  std::uint64_t modifierFlags(unsigned xModifiers) const;

 private:
  void readPlaces(X11Connection& connection, Deadline deadline);
  void readSymbols(X11Connection& connection, Deadline deadline);
  void readModifiers(X11Connection& connection, Deadline deadline);

  std::array<Key, 256> keys_;
  std::array<std::array<xcb_keysym_t, 2>, 256> symbols_{};  // of the first layout
  unsigned optionMask_ = XCB_MOD_MASK_1;
  unsigned commandMask_ = XCB_MOD_MASK_4;
};

}  // namespace pellow
