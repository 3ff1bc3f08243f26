#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platforms/simulated/desktop.h"
#include "platforms/simulated/panels.h"

// What the user does with the pointer, and panels that move below it.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;

// A strip of two tabs on a handle to drag it by, at (200, 300):
//
//   handle 0…120 ┌─────────────────┐ 80
//                │ [tab-1] [tab-2] │
//                └─────────────────┘ 0
class SimulatedPointerTest : public testing::Test {
 protected:
  SimulatedPointerTest() {
    panel->setContent(strip());
    panel->setFrame({200, 300, 120, 80});
    panel->orderFront();
  }

  View strip(const std::string& generation = "") {
    View handle{.key = "handle", .frame = {0, 0, 120, 80}};
    handle.actions.drag = {
        [=, this] { done.push_back("began" + generation); },
        [=, this](AppKitVector by) {
          done.push_back(fmt::format("by {:.0f} {:.0f}{}", by.dx, by.dy, generation));
          if (onDragged) onDragged();
        },
        [=, this] { done.push_back("ended" + generation); }};
    for (const int number : {1, 2}) {
      const auto key = fmt::format("tab-{}", number);
      View tab{.key = key, .frame = {60.0 * number - 50, 20, 40, 40}};
      tab.actions.onClick = [=, this] { done.push_back("click " + key + generation); };
      tab.actions.onHoverChanged = [=, this](bool inside) {
        done.push_back((inside ? "enter " : "leave ") + key);
      };
      handle.children.push_back(tab);
    }
    return {.key = "root", .frame = {0, 0, 120, 80}, .children = {handle}};
  }

  Lines doneAfter(const std::function<void()>& act) {
    done.clear();
    act();
    desktop.runUntilQuiet();
    return done;
  }

  simulated::Desktop desktop;
  std::unique_ptr<pellow::Panel> panel =
      desktop.panels().makePanel("pellow-strip", WindowShadow::yes);
  Lines done;
  std::function<void()> onDragged;
};

TEST_F(SimulatedPointerTest, AClickIsNoDragAndADragNoClick) {
  const auto tab = desktop.panels().panel("pellow-strip").centre("handle/tab-1");
  EXPECT_EQ(tab, (AppKitPoint{230, 340}));
  EXPECT_EQ(doneAfter([&] { desktop.pointer().drag(tab, {232, 342}); }),
            (Lines{"enter tab-1", "click tab-1"}));
  EXPECT_EQ(doneAfter([&] { desktop.pointer().drag(tab, {500, 700}, 2); }), Lines{"leave tab-1"});
  EXPECT_EQ(doneAfter([&] { desktop.pointer().drag({205, 305}, {505, 705}, 2); }),
            (Lines{"began", "by 150 200", "by 300 400", "ended"}));
  EXPECT_EQ(doneAfter([&] { desktop.pointer().drag({500, 700}, tab, 2); }), Lines{"enter tab-1"})
      << "a press elsewhere is nobody's here";

  panel->setIgnoresMouseEvents(true);
  EXPECT_EQ(doneAfter([&] { desktop.pointer().click(tab); }), Lines{"leave tab-1"});
  panel->setIgnoresMouseEvents(false);
  EXPECT_EQ(doneAfter([&] { desktop.pointer().click(tab); }),
            (Lines{"enter tab-1", "click tab-1"}));

  // Windows cover panels at desktop level.
  panel->setLevel(PanelLevel::desktopIcons);
  const auto cover = desktop.launch("Notes").openWindow("Cover", {0, 0, 1440, 900});
  EXPECT_EQ(doneAfter([&] { desktop.pointer().click(tab); }), Lines{"leave tab-1"});
  cover.minimize();
  EXPECT_EQ(doneAfter([&] { desktop.pointer().click(tab); }).back(), "click tab-1");
}

TEST_F(SimulatedPointerTest, APressBelongsToItsPanel) {
  const auto above = desktop.panels().makePanel("pellow-palette", WindowShadow::yes);
  above->setContent({.key = "above",
                     .frame = {0, 0, 10, 10},
                     .actions = {.onClick = [] { FAIL() << "it was pressed elsewhere"; }}});
  onDragged = [&] {
    panel->setFrame({0, 0, 120, 80});
    above->setFrame({300, 400, 10, 10});
    above->orderFront();
  };
  EXPECT_EQ(doneAfter([&] { desktop.pointer().drag({205, 305}, {305, 405}, 2); }),
            (Lines{"began", "by 50 50", "by 100 100", "ended"}));
  panel->setFrame({200, 300, 120, 80});
  onDragged = [&] { panel->orderOut(); };
  EXPECT_EQ(doneAfter([&] { desktop.pointer().drag({205, 305}, {225, 305}, 2); }),
            (Lines{"began", "by 10 0", "ended"}));
  panel->orderFront();
  onDragged = [&] { panel = nullptr; };
  EXPECT_EQ(doneAfter([&] { desktop.pointer().drag({205, 305}, {225, 305}, 2); }),
            (Lines{"began", "by 10 0"}));
}

TEST_F(SimulatedPointerTest, AnOpenContextMenuHoldsTheHoverOfItsPanel) {
  auto content = strip();
  content.children[0].children[0].actions.contextMenu = [&] {
    return Menu{{{.title = "Pin", .onChosen = [&] { done.emplace_back("pinned"); }}}};
  };
  panel->setContent(content);
  const auto other = desktop.panels().makePanel("pellow-palette", WindowShadow::yes);
  const auto hover = [&](bool inside) {
    done.emplace_back(inside ? "enter other" : "leave other");
  };
  other->setContent(
      {.key = "other", .frame = {0, 0, 10, 10}, .actions = {.onHoverChanged = hover}});
  other->setFrame({600, 300, 10, 10});
  other->orderFront();
  constexpr AppKitPoint tab1{230, 340};
  constexpr AppKitPoint tab2{290, 340};
  constexpr AppKitPoint onOther{605, 305};

  EXPECT_EQ(doneAfter([&] { desktop.pointer().secondaryClick(tab1); }), Lines{"enter tab-1"});
  EXPECT_EQ(doneAfter([&] { desktop.pointer().move(onOther); }), Lines{"enter other"});
  EXPECT_EQ(doneAfter([&] { desktop.menu().choose({"Pin"}); }), (Lines{"pinned", "leave tab-1"}));

  doneAfter([&] { desktop.pointer().secondaryClick(tab1); });
  EXPECT_EQ(doneAfter([&] { desktop.pointer().move(tab2); }), Lines{});
  EXPECT_EQ(doneAfter([&] { desktop.pointer().click(tab2); }),
            (Lines{"leave tab-1", "enter tab-2"}))
      << "the click only closes the menu";

  doneAfter([&] { desktop.pointer().secondaryClick(tab1); });
  EXPECT_TRUE(desktop.menu().isOpen());
  EXPECT_EQ(doneAfter([&] { panel = nullptr; }), Lines{});
  EXPECT_FALSE(desktop.menu().isOpen());
}

TEST_F(SimulatedPointerTest, PanelsFlyInVirtualTime) {
  const auto& shown = desktop.panels().panel("pellow-strip");
  const auto arrived = [&](std::string what) {
    return [&, what = std::move(what)] { done.push_back(what); };
  };
  panel->animate({600, 300, 40, 20}, 0.2, 1, AnimationTiming::linear, arrived("there"));
  EXPECT_EQ(panel->frame(), AppKitRect(600, 300, 40, 20));
  EXPECT_EQ(shown.frameNow(), AppKitRect(200, 300, 120, 80));
  desktop.run(0.5);
  EXPECT_EQ(shown.frameNow(), AppKitRect(400, 300, 80, 50));
  EXPECT_DOUBLE_EQ(shown.opacityNow(), 0.6);
  // The pointer hits it in mid-flight, and its content is as small as it is.
  desktop.pointer().click({420, 325});
  desktop.run(0);
  EXPECT_EQ(done, (Lines{"enter tab-1", "click tab-1"}));
  EXPECT_EQ(doneAfter([] {}), (Lines{"there", "leave tab-1"})) << "it has flown from below it";

  // A newer flight cuts one short, and so does setting a frame.
  panel->animate({0, 0, 100, 100}, 1, 1, AnimationTiming::easeOut, arrived("never"));
  panel->animate({175, 0, 100, 100}, 1, 1, AnimationTiming::easeInOut, arrived("newer"));
  EXPECT_EQ(doneAfter([] {}), Lines{"newer"});
  panel->animate({0, 0, 1, 1}, 1, 1, AnimationTiming::linear, arrived("never"));
  EXPECT_TRUE(doneAfter([&] { panel->setFrame({9, 9, 9, 9}); }).empty());
}

}  // namespace
}  // namespace pellow::simulated
