#include <algorithm>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "tests/random/pick.h"
#include "tests/random/world.h"

// What the user does with a strip.

namespace pellow::random {
namespace {

// Between the tabs.
AppKitPoint handle(const simulated::Panel& strip) {
  const auto frame = strip.frameNow();
  return {frame.minX() + 2, frame.midY()};
}

struct Choice {
  std::string title;
  bool isHead = false;  // of a submenu
};

std::vector<Choice> choices(const std::vector<std::string>& lines) {
  constexpr std::string_view check = "✓ ";
  constexpr std::string_view arrow = " ▸";
  std::vector<Choice> choices;
  for (auto title : lines) {
    if (title == "—" || title.ends_with(" (disabled)")) continue;
    if (title.starts_with(check)) title.erase(0, check.size());
    const bool isHead = title.ends_with(arrow);
    if (isHead) title.erase(title.size() - arrow.size());
    choices.push_back({std::move(title), isHead});
  }
  return choices;
}

// Windows of other applications than regular ones are put away on request, which nobody notes.
bool putsAwayUnusual(const simulated::DesktopState& desktop, const std::string& title) {
  return std::ranges::any_of(desktop.applications, [&](const auto& each) {
    return each.identity.activationPolicy != ActivationPolicy::regular &&
           title == fmt::format("Pellow All {} Windows Here", each.identity.localizedName);
  });
}

}  // namespace

std::optional<World::Tab> World::tab(int which) const {
  if (!programRuns()) return std::nullopt;
  std::vector<Tab> tabs;
  for (const auto* strip : desktop_->panels().visible("pellow-strip"))
    if (const auto* block = strip->view("tabs"))
      for (const auto& tab : block->children)
        tabs.push_back({strip, "tabs/" + tab->key, tab->look.accessibleName});
  if (tabs.empty()) return std::nullopt;
  return pick(tabs, which);
}

const simulated::Panel* World::strip(int which) const {
  const auto strips = desktop_->panels().visible("pellow-strip");
  return strips.empty() ? nullptr : pick(strips, which);
}

std::string World::clickTab(int which) {
  const auto clicked = tab(which);
  if (!clicked) return "";
  desktop_->panels().clickView("pellow-strip", clicked->path);
  return fmt::format("the user clicks the tab \"{}\"", clicked->name);
}

std::string World::restOn(int which) {
  const auto found = tab(which);
  if (!found) return "";
  desktop_->pointer().move(found->strip->centre(found->path));
  return fmt::format("the pointer goes to the tab \"{}\"", found->name);
}

std::string World::openMenu(int which, int whose) {
  if (const auto* const found = strip(which); found && whose % 4 == 0) {
    desktop_->pointer().secondaryClick(handle(*found));
    return "the user opens the menu of a strip";
  }
  const auto found = tab(which);
  if (!found) return "";
  desktop_->pointer().secondaryClick(found->strip->centre(found->path));
  return fmt::format("the user opens the menu of the tab \"{}\"", found->name);
}

std::string World::chooseItem(int item, int subitem) {
  auto& menu = desktop_->menu();
  if (!menu.isOpen()) return "";
  const auto chosen = pick(choices(menu.lines()), item);
  if (putsAwayUnusual(desktop_->state(), chosen.title)) return "";
  if (!chosen.isHead) {
    menu.choose({chosen.title});
    return fmt::format("the user chooses \"{}\"", chosen.title);
  }
  const auto below = pick(choices(menu.lines({chosen.title})), subitem);
  menu.choose({chosen.title, below.title});
  return fmt::format("the user chooses \"{}\" > \"{}\"", chosen.title, below.title);
}

std::string World::dragStrip(int which, int x, int y) {
  const auto* const found = strip(which);
  if (!found) return "";
  const AppKitPoint to{1.5 * x, 0.9 * y};
  desktop_->pointer().drag(handle(*found), to);
  return fmt::format("the user drags a strip to ({}, {})", to.x, to.y);
}

}  // namespace pellow::random
