#include "views/panel_pointer.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pellow {
namespace {

using Lines = std::vector<std::string>;

// A strip to be clicked and dragged by its handle, with two tabs on it to be clicked:
//
//   handle 0…120 ┌─────────────────┐ 80
//                │ [tab-1] [tab-2] │
//                └─────────────────┘ 0
class PanelPointerTest : public testing::Test {
 protected:
  PanelPointerTest() {
    tree.update(strip());
    pointer->onNeedsDisplay = [this](const ViewRect& area) { drawn.push_back(area); };
  }

  static constexpr ViewPoint tab1{30, 40};
  static constexpr ViewPoint tab2{90, 40};
  static constexpr ViewPoint handle{5, 5};

  using Life = std::shared_ptr<int>;
  static Life begin() { return std::make_shared<int>(); }

  void hear(const std::string& what, const std::weak_ptr<int>& callback) {
    heard.push_back(what);
    if (onHeard) onHeard();
    EXPECT_FALSE(callback.expired()) << "a callback lives as long as it runs";
  }
  std::function<void()> note(const std::string& what) {
    return [this, what, life = begin()] { hear(what, life); };
  }
  std::function<void(bool)> noteHover(const std::string& key) {
    return [this, key, life = begin()](bool inside) {
      hear((inside ? "into " : "out of ") + key, life);
    };
  }

  View strip(const std::string& generation = "") {
    View root{.key = "strip", .frame = {0, 0, 120, 80}};
    root.actions = {.onClick = note("click strip" + generation),
                    .onHoverChanged = noteHover("strip"),
                    .drag = {.onBegan = note("began" + generation),
                             .onDragged =
                                 [=, this, life = begin()](AppKitVector by) {
                                   hear(fmt::format("by {} {}{}", by.dx, by.dy, generation), life);
                                 },
                             .onEnded = note("ended" + generation)}};
    for (const int number : {1, 2}) {
      const auto key = fmt::format("tab-{}", number);
      View tab{.key = key, .frame = {60.0 * number - 50, 20, 40, 40}};
      tab.look.highlightsOnHover = true;
      tab.actions = {.onClick = note("click " + key + generation),
                     .onHoverChanged = noteHover(key),
                     .contextMenu = [=, this, life = begin()] {
                       hear("asked", life);
                       return Menu{{{.title = key}}};
                     }};
      root.children.push_back(tab);
    }
    root.children[1].children.push_back({.key = "badge", .frame = {0, 0, 40, 40}});
    return root;
  }
  static View empty() { return {.key = "strip", .frame = {0, 0, 120, 80}}; }

  // As on a screen on which the panel stands at (1000, 0).
  void press(ViewPoint at) { pointer->pressed(at, {1000 + at.x, at.y}); }
  void move(ViewPoint to) { pointer->moved(to, {1000 + to.x, to.y}); }
  void click(ViewPoint at) {
    press(at);
    pointer->released(at);
  }
  Lines told() { return std::exchange(heard, {}); }

  ViewTree tree;
  std::optional<PanelPointer> pointer{std::in_place, tree};
  Lines heard;
  std::vector<ViewRect> drawn;
  std::function<void()> onHeard;  // in the middle of every callback
};

TEST_F(PanelPointerTest, AClickIsPressedAndReleasedInsideTheSameView) {
  click(tab2);
  EXPECT_EQ(told(), Lines{"click tab-2"}) << "a badge leaves it to the tab it stands on";
  EXPECT_EQ(drawn, std::vector<ViewRect>(2, {70, 20, 40, 40}));
  press(tab1);
  pointer->released({51, 40});
  EXPECT_EQ(told(), Lines{});
  // Between press and release it is rendered again, or goes, or another one takes its place.
  press(tab1);
  tree.update(strip(" anew"));
  pointer->released(tab1);
  EXPECT_EQ(told(), Lines{"click tab-1 anew"});
  press(tab1);
  tree.update(empty());
  tree.update(strip());
  pointer->released(tab1);
  press(tab1);
  pointer->endPress();
  pointer->released(tab1);
  EXPECT_EQ(told(), Lines{});
  onHeard = [&] { tree.update(strip()); };
  click(tab1);
  EXPECT_EQ(told(), Lines{"click tab-1"});

  const auto node = tree.root()->children[0];
  pointer->isAt(tab1);
  EXPECT_FALSE(pointer->isPressing(*node));
  press(tab1);
  EXPECT_TRUE(pointer->isPressing(*node));
  pointer->isAt(tab2);
  EXPECT_FALSE(pointer->isPressing(*node)) << "a release would not click it";
}

TEST_F(PanelPointerTest, AViewWithAClickKeepsDragsOut) {
  pointer->isAt(tab1);
  told();
  press(tab1);
  move({12, 58});
  EXPECT_TRUE(pointer->isPressing(*tree.root()->children[0]));
  pointer->released({48, 22});
  EXPECT_EQ(told(), Lines{"click tab-1"});
  auto root = strip();
  root.children[0].children.push_back(
      {.key = "grip", .frame = {0, 0, 40, 40}, .actions = {.drag = {.onBegan = note("grip")}}});
  tree.update(root);
  press(tab1);
  move({12, 58});
  pointer->released({12, 58});
  EXPECT_EQ(told(), Lines{"grip"}) << "a drag that stands on it does begin";
}

TEST_F(PanelPointerTest, ADragBeginsAfterThreePointsAndGoesOnWhateverBecomesOfItsView) {
  pointer->isAt(handle);
  told();
  press(handle);
  move({7, 7});
  EXPECT_EQ(told(), Lines{}) << "less than three points away";
  pointer->released(handle);
  EXPECT_EQ(told(), Lines{"click strip"});
  press(handle);
  drawn.clear();
  move({7, 8});
  EXPECT_EQ(drawn, (std::vector<ViewRect>{{0, 0, 120, 80}})) << "no longer pressed";
  tree.update(strip(" anew"));
  move(tab2);
  tree.update(empty());
  pointer->isAt(std::nullopt);
  EXPECT_FALSE(pointer->contextMenuAt(tab1));
  move({-200, 400});
  pointer->released({-200, 400});
  EXPECT_EQ(told(), (Lines{"began", "by 2 3", "by 85 35", "by -205 395", "ended"}))
      << "no click, and nothing is entered or left";

  tree.update(strip());
  pointer->isAt(std::nullopt);
  told();
  press(handle);
  move(tab1);
  press(handle);  // the release was lost
  EXPECT_EQ(told(), (Lines{"began", "by 25 35", "ended"}));
  move(tab1);
  pointer->endPress();
  move(tab2);
  pointer->released(tab2);
  EXPECT_EQ(told(), (Lines{"began", "by 25 35", "ended", "into strip", "into tab-2"}));
  press(handle);
  onHeard = [&] { pointer->endPress(); };
  move(tab2);
  EXPECT_EQ(told(), (Lines{"began", "ended"})) << "its beginning hides the panel";
  press(handle);
  onHeard = [&] {
    if (heard.back() == "began") return;
    tree.update(empty());
    pointer->endPress();
  };
  move(tab2);
  EXPECT_EQ(told(), (Lines{"began", "by 85 35", "ended"}));
}

TEST_F(PanelPointerTest, ViewsAreLeftFromTheInsideOutAndThenEntered) {
  pointer->isAt(tab1);
  pointer->isAt(tab1);
  EXPECT_EQ(told(), (Lines{"into strip", "into tab-1"}));
  press({49, 40});
  move({51, 40});
  EXPECT_EQ(told(), Lines{"out of tab-1"}) << "a press is no drag yet";
  pointer->isAt(tab2);
  pointer->isAt(tab1);
  EXPECT_EQ(told(), (Lines{"into tab-2", "out of tab-2", "into tab-1"}));
  pointer->isAt(std::nullopt);
  EXPECT_EQ(told(), (Lines{"out of tab-1", "out of strip"}));
}

TEST_F(PanelPointerTest, HoverLivesOnWithTheView) {
  pointer->isAt(tab1);
  told();
  tree.update(strip(" anew"));
  pointer->isAt(tab1);
  EXPECT_EQ(told(), Lines{}) << "it was not entered a second time";
  press(tab2);  // keeps it
  onHeard = [&] { tree.update(empty()); };
  pointer->isAt(std::nullopt);
  pointer->isAt(tab2);
  EXPECT_EQ(told(), Lines{"out of tab-1"}) << "it took the strip's callbacks away";
}

TEST_F(PanelPointerTest, AContextMenuIsForTheInnermostViewThatHasOne) {
  // Making the menu replaces the very view that it is for.
  onHeard = [&] { tree.update(strip()); };
  EXPECT_EQ(pointer->contextMenuAt(tab2)->menu.items.at(0).title, "tab-2");
  EXPECT_EQ(told(), (Lines{"into strip", "into tab-2", "asked"}));
  EXPECT_FALSE(pointer->contextMenuAt(handle));
  press(handle);
  EXPECT_FALSE(pointer->contextMenuAt(tab2)) << "the primary button is down";
  EXPECT_EQ(told(), Lines{"out of tab-2"});
}

TEST_F(PanelPointerTest, AnOpenContextMenuHoldsTheHover) {
  int looks = 0;
  pointer->onNeedsPointer = [&] { ++looks; };
  auto first = pointer->contextMenuAt(tab1);
  told();
  pointer->isAt(std::nullopt);
  tree.update(strip(" anew"));
  pointer->isAt(tab2);
  EXPECT_EQ(told(), Lines{});
  auto second = pointer->contextMenuAt(tab2);
  EXPECT_EQ(told(), (Lines{"out of tab-1", "into tab-2", "asked"}));
  first.reset();
  pointer->isAt(tab1);
  EXPECT_EQ(told(), Lines{}) << "the second is still open";
  looks = 0;
  second.reset();
  EXPECT_EQ(looks, 1);
  pointer->isAt(std::nullopt);
  EXPECT_EQ(told(), (Lines{"out of tab-2", "out of strip"}));
  auto last = pointer->contextMenuAt(tab1);
  pointer.reset();
  last.reset();
  EXPECT_EQ(looks, 1) << "the panel has gone before its menu";
}

TEST_F(PanelPointerTest, NothingIsCalledOnceACallbackHasEndedThePanel) {
  for (const bool ends : {false, true}) {
    onHeard = [&] {
      EXPECT_TRUE(pointer->isCallingBack());
      ends ? pointer.reset() : pointer->giveUp();
    };
    const auto check = [&](const std::string& only) {
      EXPECT_EQ(told(), Lines{only});
      if (pointer) {
        EXPECT_FALSE(pointer->isCallingBack());
        pointer->onHighlightsBegin = [] { FAIL(); };
        pointer->isAt(tab1);
        press(tab1);
        pointer->endPress();
        EXPECT_FALSE(pointer->contextMenuAt(tab2));
        EXPECT_FALSE(pointer->call(note("a chosen menu item")));
        EXPECT_EQ(told(), Lines{});
      }
      tree.update({.key = "another"});
      tree.update(strip());
      pointer.emplace(tree);
    };
    pointer->isAt(tab1);
    check("into strip");
    press(handle);
    move(tab1);
    check("began");
    click(tab1);
    check("click tab-1");
    EXPECT_FALSE(pointer->contextMenuAt(tab2));
    check("into strip");
    const auto end = std::exchange(onHeard, nullptr);
    pointer->isAt(tab2);
    told();
    onHeard = end;
    EXPECT_FALSE(pointer->contextMenuAt(tab2));
    check("asked");
    pointer->call(note("a chosen menu item"));
    check("a chosen menu item");
  }
  press(handle);
  onHeard = nullptr;
  move(tab1);
  told();
  pointer.reset();
  EXPECT_EQ(told(), Lines{}) << "the end of the panel is the end of the drag";
}

TEST_F(PanelPointerTest, HighlightsFadeInFasterThanOut) {
  int begun = 0;
  pointer->onHighlightsBegin = [&] { ++begun; };
  pointer->isAt(tab1);
  EXPECT_EQ(begun, 1);
  const auto& node = *tree.root()->children[0];
  EXPECT_TRUE(pointer->advanceHighlights(0.03));
  EXPECT_DOUBLE_EQ(node.highlight, 0.5);
  EXPECT_FALSE(pointer->advanceHighlights(1));
  EXPECT_EQ(node.highlight, 1);
  EXPECT_EQ(drawn, std::vector<ViewRect>(2, {10, 20, 40, 40})) << "only what highlights";
  pointer->isAt(tab2);
  EXPECT_TRUE(pointer->advanceHighlights(0.03));
  EXPECT_DOUBLE_EQ(node.highlight, 0.8);
}

}  // namespace
}  // namespace pellow
