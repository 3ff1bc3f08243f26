#include "platforms/linux/accessibility_bus/title_buttons.h"

#include <algorithm>
#include <ranges>

namespace pellow {

namespace {

using Objects = std::vector<AccessibleObject>;
using Group = std::vector<AccessibleRect>;  // the buttons of one parent

constexpr std::uint32_t pushButton = 43;

// The levels of a tree, one after another.
class Search {
 public:
  Search(AccessibilityBus& bus, int top, int height) : bus_(bus), top_(top), height_(height) {}

  std::optional<std::vector<Group>> groupsIn(const AccessibleObject& window) {
    Objects level{window};
    while (!level.empty()) {
      const auto families = bus_.children(level);
      if (!families) return std::nullopt;
      level.clear();
      if (!look(*families, level)) return std::nullopt;
    }
    return std::move(groups_);
  }

 private:
  // Keeps the buttons among the children, a group for each family, and adds to `level` what may
  // hold others. False when they do not answer, or are too many.
  bool look(const std::vector<std::optional<Objects>>& families, Objects& level) {
    constexpr std::size_t most = 500;
    Objects children;
    std::vector<std::size_t> familyOf;
    for (std::size_t i = 0; i < families.size(); ++i) {
      if (!families[i]) continue;
      children.insert(children.end(), families[i]->begin(), families[i]->end());
      familyOf.resize(children.size(), i);
    }
    seen_ += children.size();
    if (seen_ > most) return false;
    const auto places = bus_.inWindow(children);
    if (!places) return false;
    const auto roles = bus_.roles(children);
    if (!roles) return false;
    std::vector<Group> groups(families.size());
    for (std::size_t i = 0; i < children.size(); ++i) {
      const auto& place = (*places)[i];
      if (!place || !reachesTitleBar(*place)) continue;
      if ((*roles)[i] == pushButton)
        groups[familyOf[i]].push_back(*place);
      else
        level.push_back(children[i]);
    }
    for (auto& group : groups)
      if (!group.empty()) groups_.push_back(std::move(group));
    return true;
  }

  // Hidden buttons have no size, or a place outside every window.
  bool reachesTitleBar(const AccessibleRect& place) const {
    return place.width > 0 && place.height > 0 && place.y < top_ + height_ && place.maxY() > top_;
  }

  AccessibilityBus& bus_;
  const int top_;
  const int height_;
  std::size_t seen_ = 0;
  std::vector<Group> groups_;
};

int middleOf(const AccessibleRect& rect) { return rect.y + rect.height / 2; }

// Drops what is not in the top row; there is one.
void keepOneRow(std::vector<Group>& groups) {
  const int middle = std::ranges::min(groups | std::views::join | std::views::transform(middleOf));
  for (auto& group : groups)
    std::erase_if(group, [&](const AccessibleRect& button) {
      return button.y > middle || button.maxY() <= middle;
    });
  std::erase_if(groups, [](const Group& group) { return group.empty(); });
}

}  // namespace

std::optional<TitleButtons> titleButtons(AccessibilityBus& bus, const AccessibleObject& window,
                                         int top, int height) {
  auto groups = Search(bus, top, height).groupsIn(window);
  if (!groups || groups->empty()) return std::nullopt;
  keepOneRow(*groups);
  for (auto& group : *groups) std::ranges::sort(group, {}, &AccessibleRect::x);
  TitleButtons result;
  result.left =
      *std::ranges::min_element(*groups, {}, [](const Group& group) { return group.front().x; });
  result.right = *std::ranges::max_element(*groups, {},
                                           [](const Group& group) { return group.back().maxX(); });
  std::ranges::reverse(result.right);
  return result;
}

}  // namespace pellow
