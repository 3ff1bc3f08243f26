#include "platforms/linux/x11/button_layout.h"

#include <algorithm>
#include <array>
#include <ranges>

namespace pellow {

namespace {

struct Word {
  std::string_view text;
  TitleButton button;
};

// Spacers and rare buttons (help, the menu of an application) are not here: they take next to no
// room.
constexpr std::array names{
    Word{"minimize", TitleButton::minimize}, Word{"maximize", TitleButton::maximize},
    Word{"close", TitleButton::close},       Word{"shade", TitleButton::shade},
    Word{"stick", TitleButton::stick},       Word{"above", TitleButton::menu},
    Word{"menu", TitleButton::menu},         Word{"icon", TitleButton::menu},
};
constexpr std::array words{
    Word{"Minimize", TitleButton::minimize}, Word{"Maximize", TitleButton::maximize},
    Word{"Close", TitleButton::close},       Word{"Shade", TitleButton::shade},
    Word{"Stick", TitleButton::stick},       Word{"MenuIcon", TitleButton::menu},
};
constexpr std::array letters{
    Word{"I", TitleButton::minimize}, Word{"A", TitleButton::maximize},
    Word{"X", TitleButton::close},    Word{"L", TitleButton::shade},
    Word{"S", TitleButton::stick},    Word{"M", TitleButton::menu},
    Word{"F", TitleButton::menu},     Word{"B", TitleButton::menu},
};

void addWord(std::vector<TitleButton>& side, const auto& known, std::string_view text) {
  const auto found = std::ranges::find(known, text, &Word::text);
  if (found != known.end()) side.push_back(found->button);
}

std::vector<TitleButton> split(std::string_view text, char separator, const auto& known) {
  std::vector<TitleButton> side;
  for (const auto part : std::views::split(text, separator))
    addWord(side, known, std::string_view(part.begin(), part.end()));
  return side;
}

std::vector<TitleButton> eachLetter(std::string_view text) {
  std::vector<TitleButton> side;
  for (std::size_t i = 0; i < text.size(); ++i) addWord(side, letters, text.substr(i, 1));
  return side;
}

// How many buttons stand before the minimize button.
std::optional<int> numberIn(const auto& side, const std::function<bool(TitleButton)>& isShown) {
  int number = 0;
  for (const auto button : side) {
    if (!isShown(button)) continue;
    if (button == TitleButton::minimize) return number;
    ++number;
  }
  return std::nullopt;
}

}  // namespace

ButtonLayout ButtonLayout::fromNames(std::string_view text) {
  const auto colon = std::min(text.find(':'), text.size());
  return {split(text.substr(0, colon), ',', names),
          split(text.substr(std::min(colon + 1, text.size())), ',', names)};
}

ButtonLayout ButtonLayout::fromWords(std::string_view left, std::string_view right) {
  return {split(left, ' ', words), split(right, ' ', words)};
}

ButtonLayout ButtonLayout::fromLetters(std::string_view left, std::string_view right) {
  return {eachLetter(left), eachLetter(right)};
}

std::optional<ButtonPlace> minimizePlace(const ButtonLayout& layout,
                                         const std::function<bool(TitleButton)>& isShown) {
  if (const auto number = numberIn(layout.left, isShown)) return ButtonPlace{true, *number};
  const auto number = numberIn(layout.right | std::views::reverse, isShown);
  if (!number) return std::nullopt;
  return ButtonPlace{false, *number};
}

}  // namespace pellow
