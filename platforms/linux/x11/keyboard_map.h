#pragma once

#include <xcb/xproto.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct xkb_keymap;

namespace pellow {

// What the X key codes of the keyboard mean to the program. Looking up allocates nothing, except
// where a list is asked for. Any thread.
class KeyboardMap {
 public:
  KeyboardMap() = default;  // of a keyboard without keys
  explicit KeyboardMap(xkb_keymap& keymap);

  // The virtual key code of the ANSI layout, by the place of the key on the keyboard; absent for
  // modifiers and keys that no Mac has.
  std::optional<std::uint16_t> keyCode(std::uint8_t xKeycode) const { return keys_[xKeycode].code; }

  // What a key types in one of the layouts of the keyboard, with Shift or without; good as long as
  // this is.
  std::string_view characters(std::uint8_t xKeycode, unsigned layout, bool shift) const {
    return keys_[xKeycode].texts[layout % layouts][shift].data();
  }

  // Whether a key at the place of a virtual key code types, in one of the layouts and without
  // modifiers, what a key does that X calls by this name, in any case: "t", "F1", "Page_Up".
  bool types(std::uint16_t keyCode, const std::string& xName) const;

  // The keys at the place of a virtual key code; there may be several.
  std::vector<std::uint8_t> xKeycodes(std::uint16_t keyCode) const;

  // Modifier flags for X modifier bits and back: Command is Super, Option is Alt, wherever they
  // are.
  std::uint64_t modifierFlags(unsigned xModifiers) const;
  unsigned xModifiers(std::uint64_t modifierFlags) const;

  // The X modifier bits of Num Lock; 0 when the keyboard has none.
  unsigned numLock() const { return numLockMask_; }

 private:
  static constexpr unsigned layouts = 4;  // as many as XKB knows

  using Text = std::array<char, 8>;  // one character in UTF-8, with a zero at its end
  struct Key {
    std::optional<std::uint16_t> code;
    std::array<std::array<Text, 2>, layouts> texts{};
  };

  static Text textOf(std::uint32_t symbol);
  void readModifiers(xkb_keymap& keymap);
  void readTexts(xkb_keymap& keymap, unsigned layout, bool shift);

  std::array<Key, 256> keys_{};
  unsigned optionMask_ = XCB_MOD_MASK_1;
  unsigned commandMask_ = XCB_MOD_MASK_4;
  unsigned numLockMask_ = 0;
};

}  // namespace pellow
