#include "shortcuts/shortcut_action.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/event_monitors.h"

namespace pellow {
namespace {

struct ActionRow {
  std::string_view title;
  std::uint16_t keyCode;  // of the letter on an ANSI keyboard
  std::string_view letter;
};

constexpr std::array<ActionRow, RawValues<ShortcutAction>::texts.size()> rows{{
    {"Pellow frontmost window", 17, "t"},
    {"Keep tabs above other windows", 3, "f"},
    {"Pellow all pinned apps", 35, "p"},
    {"Pellow everything", 0, "a"},
    {"Focus: pellow everything else", 14, "e"},
    {"Restore all tabs", 15, "r"},
}};

const ActionRow& row(ShortcutAction action) {
  return rows[static_cast<std::size_t>(std::to_underlying(action))];
}

}  // namespace

std::string_view title(ShortcutAction action) { return row(action).title; }

Shortcut defaultShortcut(ShortcutAction action) {
  return {.keyCode = row(action).keyCode,
          .characters = std::string(row(action).letter),
          .modifiers = modifier::control | modifier::option | modifier::command};
}

}  // namespace pellow
