#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace pellow {

enum class TitleButton { minimize, maximize, close, shade, stick, menu };

// Which buttons a title bar has, both sides from left to right:
//
//     ┌─────────────────────────────────────────────┐
//     │ menu  stick       title      minimize close │
//     └─────────────────────────────────────────────┘
//           left                        right
struct ButtonLayout {
  std::vector<TitleButton> left;
  std::vector<TitleButton> right;
  bool isThemed = false;  // the buttons may be anywhere else than in the usual theme

  bool operator==(const ButtonLayout&) const = default;

  // "menu:minimize,maximize,close": as GNOME, MATE and GTK write it.
  static ButtonLayout fromNames(std::string_view text);
  // "Stick" and "Minimize Maximize Close": as fluxbox does.
  static ButtonLayout fromWords(std::string_view left, std::string_view right);
  // "MS" and "HIAX": as KWin does.
  static ButtonLayout fromLetters(std::string_view left, std::string_view right);
};

// The place of a button: the outermost one of a side has number 0.
struct ButtonPlace {
  bool isLeft = false;
  int number = 0;

  bool operator==(const ButtonPlace&) const = default;
};

// Where the minimize button is in a title bar that leaves out buttons its window has no use for;
// nothing when it has none.
std::optional<ButtonPlace> minimizePlace(const ButtonLayout& layout,
                                         const std::function<bool(TitleButton)>& isShown);

}  // namespace pellow
