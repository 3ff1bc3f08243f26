#include "platforms/simulated/open_menu.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <fmt/ranges.h>

#include "platforms/simulated/system.h"

namespace pellow::simulated {
namespace {

[[noreturn]] void refuse(std::span<const std::string_view> path, std::string_view why) {
  throw std::out_of_range(fmt::format("the menu item \"{}\" {}", fmt::join(path, " > "), why));
}

}  // namespace

Subscription OpenMenu::open(Menu menu, Subscription whileOpen) {
  if (menu.items.empty()) return {};
  open_ = std::make_shared<Open>(std::move(menu), std::move(whileOpen));
  return Subscription([this, opened = std::weak_ptr(open_)] {
    if (open_ && open_ == opened.lock()) close();
  });
}

bool OpenMenu::isOpen() const { return open_ && system_.processRuns(); }

const Menu& OpenMenu::menuAt(Steps path) const {
  if (!isOpen()) throw std::out_of_range("no menu is open");
  if (path.empty()) return open_->menu;
  const auto& head = itemAt(path);
  if (!head.submenu) refuse(path, "has no submenu");
  return *head.submenu;
}

const MenuItem& OpenMenu::itemAt(Steps path) const {
  const auto& items = menuAt(path.first(path.size() - 1)).items;
  const auto found = std::ranges::find_if(
      items, [&](const MenuItem& each) { return !each.isSeparator && each.title == path.back(); });
  if (found == items.end()) refuse(path, "is not there");
  return *found;
}

void OpenMenu::choose(Path path) {
  const Steps steps = path;
  for (std::size_t depth = 1; depth <= steps.size(); ++depth)
    if (!itemAt(steps.first(depth)).isEnabled) refuse(steps, "is disabled");
  const auto onChosen = itemAt(steps).onChosen;
  if (!onChosen) refuse(steps, "cannot be chosen");
  const auto closed = std::exchange(open_, nullptr);
  system_.mainLoop.post([onChosen, whileOpen = std::move(closed->whileOpen)]() mutable {
    onChosen();
    whileOpen.cancel();
  });
}

std::vector<std::string> OpenMenu::lines(Path path) const {
  std::vector<std::string> lines;
  for (const auto& item : menuAt(path).items)
    lines.push_back(item.isSeparator ? "—"
                                     : fmt::format("{}{}{}{}", item.isChecked ? "✓ " : "",
                                                   item.title, item.submenu ? " ▸" : "",
                                                   item.isEnabled ? "" : " (disabled)"));
  return lines;
}

}  // namespace pellow::simulated
