#pragma once

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "platform/view.h"

namespace pellow {

struct PaletteAction {
  std::string title;
  std::string symbol;  // the name of a system symbol
  std::function<void()> handler;
};
struct PaletteSeparator {};
using PaletteRow = std::variant<PaletteAction, PaletteSeparator>;

// The content of the palette, 268 points wide and as high as its rows need:
//
//   ┌──────────────────────────────┐
//   │ ▭  Pellow Window             │  26
//   │ ❐  Pellow All Windows of App │  26
//   │ ──────────────────────────── │   9
//   │ ⚙  Pellow Settings…          │  26, and 5 around all
//   └──────────────────────────────┘
View paletteView(const std::vector<PaletteRow>& rows);

}  // namespace pellow
