#include "platforms/linux/x11/keyboard_map.h"

#include <map>
#include <string_view>

#include "platform/event_monitors.h"
#include "platforms/linux/x11/text_encoding.h"
#include "platforms/linux/x11/xcb_xkb.h"

namespace pellow {

namespace {

constexpr xcb_xkb_device_spec_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;

constexpr xcb_keysym_t altLeft = 0xffe9;
constexpr xcb_keysym_t altRight = 0xffea;
constexpr xcb_keysym_t superLeft = 0xffeb;
constexpr xcb_keysym_t superRight = 0xffec;

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

// What AppKit reports for the keys that type no letter.
const std::map<xcb_keysym_t, std::uint32_t> functionKeys = {
    {0xff08, 0x7f},   {0xff09, 0x09},   {0xff0d, 0x0d},   {0xff1b, 0x1b},   {0xff50, 0xf729},
    {0xff51, 0xf702}, {0xff52, 0xf700}, {0xff53, 0xf703}, {0xff54, 0xf701}, {0xff55, 0xf72c},
    {0xff56, 0xf72d}, {0xff57, 0xf72b}, {0xff63, 0xf746}, {0xff8d, 0x03},   {0xffff, 0xf728},
};

// The symbols of the oldest alphabets are the bytes of character sets, shifted.
const std::map<unsigned, const char*> alphabets = {
    {0x01, "ISO-8859-2"}, {0x02, "ISO-8859-3"}, {0x03, "ISO-8859-4"}, {0x05, "ISO-8859-6"},
    {0x06, "KOI8-R"},     {0x07, "ISO-8859-7"}, {0x0c, "ISO-8859-8"}, {0x0d, "TIS-620"},
};

std::string charactersOf(xcb_keysym_t symbol) {
  constexpr xcb_keysym_t firstFunctionKey = 0xffbe;
  constexpr xcb_keysym_t lastFunctionKey = 0xffe0;
  constexpr xcb_keysym_t unicode = 0x01000000;
  constexpr xcb_keysym_t keypadFirst = 0xffaa;  // the sign of multiplication, ASCII from here on
  constexpr xcb_keysym_t keypadLast = 0xffb9;
  if (symbol >= firstFunctionKey && symbol <= lastFunctionKey)
    return utf8FromCodePoint(0xf704 + (symbol - firstFunctionKey));
  if (symbol >= keypadFirst && symbol <= keypadLast) return utf8FromCodePoint(symbol - 0xff80);
  if (const auto found = functionKeys.find(symbol); found != functionKeys.end())
    return utf8FromCodePoint(found->second);
  if ((symbol >= 0x20 && symbol < 0x7f) || (symbol >= 0xa0 && symbol <= 0xff))
    return utf8FromCodePoint(symbol);
  if (symbol > unicode && symbol <= unicode + 0x10ffff) return utf8FromCodePoint(symbol - unicode);
  const auto alphabet = alphabets.find(symbol >> 8);
  if (alphabet == alphabets.end()) return {};
  const char byte = static_cast<char>(symbol & 0xff);
  return utf8From(alphabet->second, {&byte, 1});
}

}  // namespace

std::optional<KeyboardMap> KeyboardMap::read(X11Connection& connection) {
  if (connection.isLost()) return std::nullopt;
  KeyboardMap map;
  const Deadline deadline = deadlineIn(serverPatience);
  map.readPlaces(connection, deadline);
  map.readSymbols(connection, deadline);
  map.readModifiers(connection, deadline);
  return hasPassed(deadline) ? std::nullopt : std::optional(std::move(map));
}

void KeyboardMap::readPlaces(X11Connection& connection, Deadline deadline) {
  auto pending = connection.pending<xcb_xkb_get_names_reply_t>(
      xcb_xkb_get_names(connection.raw(), coreKeyboard, XCB_XKB_NAME_DETAIL_KEY_NAMES));
  const auto reply = pending.collect(deadline);
  if (!reply) return;
  const auto& names = **reply;
  xcb_xkb_get_names_value_list_t list{};
  xcb_xkb_get_names_value_list_unpack(
      xcb_xkb_get_names_value_list(&names), names.nTypes, names.indicators, names.virtualMods,
      names.groupNames, names.nKeys, names.nKeyAliases, names.nRadioGroups, names.which, &list);
  if (!list.keyNames) return;
  for (unsigned i = 0; i < names.nKeys && names.firstKey + i < keys_.size(); ++i) {
    std::string_view name(list.keyNames[i].name, sizeof list.keyNames[i].name);
    name = name.substr(0, name.find('\0'));
    const auto place = places.find(name);
    if (place != places.end()) keys_[names.firstKey + i].keyCode = place->second;
  }
}

void KeyboardMap::readSymbols(X11Connection& connection, Deadline deadline) {
  const auto* setup = xcb_get_setup(connection.raw());
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
  auto pending = connection.pending<xcb_get_keyboard_mapping_reply_t>(
      xcb_get_keyboard_mapping(connection.raw(), setup->min_keycode, count));
  const auto reply = pending.collect(deadline);
  if (!reply) return;
  const auto* symbols = xcb_get_keyboard_mapping_keysyms(reply->get());
  const unsigned perKey = (*reply)->keysyms_per_keycode;
  for (unsigned i = 0; i < count; ++i) {
    auto& key = keys_[setup->min_keycode + i];
    for (unsigned column = 0; column < 4 && column < perKey; ++column) {
      const auto symbol = symbols[i * perKey + column];
      key.characters[column / 2][column % 2] = charactersOf(symbol);
      if (column < 2) symbols_[setup->min_keycode + i][column] = symbol;
    }
    auto& [first, second] = key.characters;
    for (auto* layout : {&first, &second})
      if ((*layout)[1].empty()) (*layout)[1] = (*layout)[0];
    if (second[0].empty()) second = first;
  }
}

void KeyboardMap::readModifiers(X11Connection& connection, Deadline deadline) {
  auto pending = connection.pending<xcb_get_modifier_mapping_reply_t>(
      xcb_get_modifier_mapping(connection.raw()));
  const auto reply = pending.collect(deadline);
  if (!reply) return;
  const auto* keycodes = xcb_get_modifier_mapping_keycodes(reply->get());
  const unsigned perModifier = (*reply)->keycodes_per_modifier;
  const auto maskOf = [&](xcb_keysym_t left, xcb_keysym_t right) {
    unsigned mask = 0;
    // The first three are Shift, Lock and Control.
    for (unsigned i = 3 * perModifier; i < 8 * perModifier; ++i)
      for (const auto symbol : symbols_[keycodes[i]])
        if (symbol == left || symbol == right) mask |= 1u << (i / perModifier);
    return mask;
  };
  if (const auto mask = maskOf(altLeft, altRight)) optionMask_ = mask;
  if (const auto mask = maskOf(superLeft, superRight)) commandMask_ = mask;
}

std::uint64_t KeyboardMap::modifierFlags(unsigned xModifiers) const {
  std::uint64_t flags = 0;
  if (xModifiers & XCB_MOD_MASK_SHIFT) flags |= modifier::shift;
  if (xModifiers & XCB_MOD_MASK_CONTROL) flags |= modifier::control;
  if (xModifiers & optionMask_) flags |= modifier::option;
  if (xModifiers & commandMask_) flags |= modifier::command;
  return flags;
}

}  // namespace pellow
