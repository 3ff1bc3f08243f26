#include "platforms/linux/x11/keyboard_map.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <map>
#include <memory>

#include "platform/event_monitors.h"

namespace pellow {

namespace {

// The places of keys by their XKB names: A is the alphanumeric block, its second letter the row
// from the bottom, the number the column; then the ANSI virtual key code of the same place.
//
//     TLDE AE01 AE02 …           `  1  2 …
//          AD01 AD02 …              Q  W …
//          AC01 AC02 …              A  S …
//          AB01 AB02 …              Z  X …
const std::map<std::string_view, std::uint16_t> places = {
    {"TLDE", 50},  {"AE01", 18},  {"AE02", 19},  {"AE03", 20},  {"AE04", 21},  {"AE05", 23},
    {"AE06", 22},  {"AE07", 26},  {"AE08", 28},  {"AE09", 25},  {"AE10", 29},  {"AE11", 27},
    {"AE12", 24},  {"AE13", 93},  {"BKSP", 51},  {"TAB", 48},   {"AD01", 12},  {"AD02", 13},
    {"AD03", 14},  {"AD04", 15},  {"AD05", 17},  {"AD06", 16},  {"AD07", 32},  {"AD08", 34},
    {"AD09", 31},  {"AD10", 35},  {"AD11", 33},  {"AD12", 30},  {"BKSL", 42},  {"AC12", 42},
    {"AC01", 0},   {"AC02", 1},   {"AC03", 2},   {"AC04", 3},   {"AC05", 5},   {"AC06", 4},
    {"AC07", 38},  {"AC08", 40},  {"AC09", 37},  {"AC10", 41},  {"AC11", 39},  {"RTRN", 36},
    {"LSGT", 10},  {"AB01", 6},   {"AB02", 7},   {"AB03", 8},   {"AB04", 9},   {"AB05", 11},
    {"AB06", 45},  {"AB07", 46},  {"AB08", 43},  {"AB09", 47},  {"AB10", 44},  {"AB11", 94},
    {"SPCE", 49},  {"ESC", 53},   {"FK01", 122}, {"FK02", 120}, {"FK03", 99},  {"FK04", 118},
    {"FK05", 96},  {"FK06", 97},  {"FK07", 98},  {"FK08", 100}, {"FK09", 101}, {"FK10", 109},
    {"FK11", 103}, {"FK12", 111}, {"FK13", 105}, {"FK14", 107}, {"FK15", 113}, {"FK16", 106},
    {"FK17", 64},  {"FK18", 79},  {"FK19", 80},  {"FK20", 90},  {"UP", 126},   {"DOWN", 125},
    {"LEFT", 123}, {"RGHT", 124}, {"HOME", 115}, {"END", 119},  {"PGUP", 116}, {"PGDN", 121},
    {"DELE", 117}, {"INS", 114},  {"NMLK", 71},  {"KPDV", 75},  {"KPMU", 67},  {"KPSU", 78},
    {"KPAD", 69},  {"KPEN", 76},  {"KPEQ", 81},  {"KPDL", 65},  {"KP0", 82},   {"KP1", 83},
    {"KP2", 84},   {"KP3", 85},   {"KP4", 86},   {"KP5", 87},   {"KP6", 88},   {"KP7", 89},
    {"KP8", 91},   {"KP9", 92},
};

// What AppKit reports for the keys that type no letter, where it is not what they type on X.
const std::map<xkb_keysym_t, std::string_view> functionKeys = {
    {XKB_KEY_BackSpace, "\x7f"}, {XKB_KEY_KP_Enter, "\x03"}, {XKB_KEY_Delete, "\uf728"},
    {XKB_KEY_Insert, "\uf746"},  {XKB_KEY_Home, "\uf729"},   {XKB_KEY_End, "\uf72b"},
    {XKB_KEY_Prior, "\uf72c"},   {XKB_KEY_Next, "\uf72d"},   {XKB_KEY_Up, "\uf700"},
    {XKB_KEY_Down, "\uf701"},    {XKB_KEY_Left, "\uf702"},   {XKB_KEY_Right, "\uf703"},
};

using State = std::unique_ptr<xkb_state, decltype(&xkb_state_unref)>;

State makeState(xkb_keymap& keymap) { return {xkb_state_new(&keymap), xkb_state_unref}; }

// What the key types in the first layout, without modifiers.
xkb_keysym_t firstSymbol(xkb_keymap& keymap, xkb_keycode_t key) {
  const xkb_keysym_t* symbols = nullptr;
  return xkb_keymap_key_get_syms_by_level(&keymap, key, 0, 0, &symbols) > 0 ? *symbols
                                                                            : XKB_KEY_NoSymbol;
}

// The X modifier bits that pressing the key sets.
unsigned modifiersOf(xkb_keymap& keymap, xkb_keycode_t key) {
  const auto state = makeState(keymap);
  xkb_state_update_key(state.get(), key, XKB_KEY_DOWN);
  return xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_EFFECTIVE) & 0xff;
}

}  // namespace

KeyboardMap::KeyboardMap(xkb_keymap& keymap) {
  for (xkb_keycode_t key = 0; key < keys_.size(); ++key) {
    const auto* const name = xkb_keymap_key_get_name(&keymap, key);
    const auto place = name ? places.find(name) : places.end();
    if (place != places.end()) keys_[key].code = place->second;
  }
  readModifiers(keymap);
  for (unsigned layout = 0; layout < layouts; ++layout)
    for (const bool shift : {false, true}) readTexts(keymap, layout, shift);
}

void KeyboardMap::readModifiers(xkb_keymap& keymap) {
  unsigned option = 0;
  unsigned command = 0;
  for (xkb_keycode_t key = 0; key < keys_.size(); ++key) {
    const auto symbol = firstSymbol(keymap, key);
    if (symbol == XKB_KEY_Alt_L || symbol == XKB_KEY_Alt_R) option |= modifiersOf(keymap, key);
    if (symbol == XKB_KEY_Super_L || symbol == XKB_KEY_Super_R) command |= modifiersOf(keymap, key);
    if (symbol == XKB_KEY_Num_Lock) numLockMask_ |= modifiersOf(keymap, key);
  }
  constexpr unsigned others = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL;
  if (option & ~others) optionMask_ = option & ~others;
  if (command & ~others) commandMask_ = command & ~others;
}

// With Num Lock on: a Mac's keypad always types digits.
void KeyboardMap::readTexts(xkb_keymap& keymap, unsigned layout, bool shift) {
  const auto state = makeState(keymap);
  xkb_state_update_mask(state.get(), shift ? XCB_MOD_MASK_SHIFT : 0, 0, numLockMask_, 0, 0, layout);
  for (xkb_keycode_t key = 0; key < keys_.size(); ++key) {
    auto& texts = keys_[key].texts[layout];
    const auto symbol = xkb_state_key_get_one_sym(state.get(), key);
    texts[shift] = textOf(symbol);
    if (shift && texts[1].front() == '\0') texts[1] = texts[0];
  }
}

KeyboardMap::Text KeyboardMap::textOf(std::uint32_t symbol) {
  constexpr xkb_keysym_t firstOfAppKit = 0x0100f704;  // U+F704, as a symbol
  Text text{};
  if (const auto found = functionKeys.find(symbol); found != functionKeys.end()) {
    std::ranges::copy(found->second, text.begin());
    return text;
  }
  if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F35) symbol = firstOfAppKit + (symbol - XKB_KEY_F1);
  xkb_keysym_to_utf8(symbol, text.data(), text.size());
  return text;
}

std::vector<std::uint8_t> KeyboardMap::xKeycodes(std::uint16_t keyCode) const {
  std::vector<std::uint8_t> found;
  for (std::size_t key = 0; key < keys_.size(); ++key)
    if (keys_[key].code == keyCode) found.push_back(static_cast<std::uint8_t>(key));
  return found;
}

// A name may be the very sign that the key types.
bool KeyboardMap::types(std::uint16_t keyCode, const std::string& xName) const {
  const auto symbol = xkb_keysym_from_name(xName.c_str(), XKB_KEYSYM_CASE_INSENSITIVE);
  const auto text = symbol == XKB_KEY_NoSymbol ? xName : std::string(textOf(symbol).data());
  return !text.empty() && std::ranges::any_of(xKeycodes(keyCode), [&](std::uint8_t key) {
    return std::ranges::any_of(keys_[key].texts,
                               [&](const auto& texts) { return texts[0].data() == text; });
  });
}

std::uint64_t KeyboardMap::modifierFlags(unsigned xModifiers) const {
  std::uint64_t flags = 0;
  if (xModifiers & XCB_MOD_MASK_SHIFT) flags |= modifier::shift;
  if (xModifiers & XCB_MOD_MASK_CONTROL) flags |= modifier::control;
  if (xModifiers & optionMask_) flags |= modifier::option;
  if (xModifiers & commandMask_) flags |= modifier::command;
  return flags;
}

unsigned KeyboardMap::xModifiers(std::uint64_t modifierFlags) const {
  unsigned modifiers = 0;
  if (modifierFlags & modifier::shift) modifiers |= XCB_MOD_MASK_SHIFT;
  if (modifierFlags & modifier::control) modifiers |= XCB_MOD_MASK_CONTROL;
  if (modifierFlags & modifier::option) modifiers |= optionMask_;
  if (modifierFlags & modifier::command) modifiers |= commandMask_;
  return modifiers;
}

}  // namespace pellow
