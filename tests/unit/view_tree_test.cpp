#include "views/view_tree.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace pellow {
namespace {

using Areas = std::vector<ViewRect>;

View view(std::string key, ViewRect frame, std::vector<View> children = {}) {
  return {.key = std::move(key), .frame = frame, .children = std::move(children)};
}

// A content of 100 by 100 points around some views.
View content(std::vector<View> children) {
  return view("root", {500, 500, 100, 100}, std::move(children));
}

std::string keysAt(const ViewTree& tree, ViewPoint point) {
  std::string keys;
  for (const auto& node : tree.at(point)) keys += node->key + " ";
  return keys;
}

TEST(ViewTree, WhatChangesIsDrawnWhereItWasAndWhereItIs) {
  ViewTree tree;
  const auto tab = view("tab", {10, 10, 20, 20}, {view("title", {0, 0, 40, 5})});
  const auto other = view("other", {50, 50, 20, 20});
  EXPECT_EQ(tree.update(content({tab, other})), (Areas{{0, 0, 100, 100}}))
      << "wherever the root says it is";
  EXPECT_EQ(tree.update(content({tab, other})), Areas{});

  auto symbol = tab;
  symbol.look.content = Symbol{.name = "pin"};
  EXPECT_EQ(tree.update(content({symbol, other})), Areas(2, {10, 10, 20, 20}))
      << "without its children";
  symbol.look.shadow = Shadow{.opacity = 1, .blurRadius = 3.5, .dx = 1, .dy = -2};
  EXPECT_EQ(tree.update(content({symbol, other})).back(), ViewRect(6, 3, 30, 30));

  tree.update(content({tab, other}));
  auto moved = tab;
  moved.frame.origin.x = 15;
  EXPECT_EQ(tree.update(content({moved, other})), (Areas{{10, 10, 40, 20}, {15, 10, 40, 20}}))
      << "with its children";
  EXPECT_EQ(tree.update(content({moved})), (Areas{{50, 50, 20, 20}}));
  EXPECT_EQ(tree.update(content({moved, other})), (Areas{{50, 50, 20, 20}}));
  EXPECT_FALSE(tree.update(content({other, moved})).empty()) << "they may overlap";
  tree.update(content({tab, other}));

  auto turned = tab;
  turned.look.rotation = 90;
  const auto area = tree.update(content({turned, other})).back();
  EXPECT_NEAR(area.minX(), 10, 1e-9);
  EXPECT_NEAR(area.maxX(), 30, 1e-9);
  EXPECT_NEAR(area.maxY(), 50, 1e-9) << "its title runs upwards";
}

TEST(ViewTree, KeptViewsAreLookedIntoOnlyWhenTheyAreOthers) {
  ViewTree tree;
  const auto keep = [](const View& kept) { return std::make_shared<const View>(kept); };
  const auto first = keep(view("first", {7, 7, 20, 20}, {view("title", {0, 0, 5, 5})}));
  auto other = view("second", {0, 0, 20, 20});
  const auto second = keep(other);
  const auto shown = [&](std::vector<KeptView> kept) {
    auto all = content({});
    all.kept = std::move(kept);
    return tree.update(all);
  };
  shown({{{0, 0}, first}, {{50, 0}, second}});
  const auto nodes = tree.root()->children;
  EXPECT_EQ(shown({{{0, 0}, first}, {{50, 0}, second}}), Areas{});
  EXPECT_EQ(shown({{{0, 30}, first}, {{50, 0}, second}}), (Areas{{0, 0, 20, 20}, {0, 30, 20, 20}}));
  other.look.content = Symbol{.name = "pin"};
  other.actions.onClick = [] {};
  EXPECT_EQ(shown({{{0, 30}, first}, {{50, 0}, keep(other)}}), Areas(2, {50, 0, 20, 20}));
  EXPECT_TRUE(nodes[1]->actions.onClick);
  EXPECT_FALSE(shown({{{50, 0}, keep(other)}, {{0, 60}, first}}).empty());
  EXPECT_EQ(tree.root()->children, (ViewTree::Nodes{nodes[1], nodes[0]}));
  EXPECT_EQ(nodes[0]->frame, ViewRect(0, 60, 20, 20));
  shown({{{0, 60}, first}});
  EXPECT_FALSE(nodes[1]->actions.onClick) << "it has gone";
}

TEST(ViewTree, ManyChangesAreOne) {
  ViewTree tree;
  std::vector<View> tabs;
  for (int index = 0; index < 100; ++index)
    tabs.push_back(view(std::to_string(index), {1.0 * index, 0, 1, 1}));
  tree.update(content(tabs));
  for (auto& tab : tabs) tab.frame.origin.y = 1;
  EXPECT_EQ(tree.update(content(tabs)), (Areas{{0, 0, 100, 100}}));
}

struct Drawing final : ViewNode::NativePart {
  bool isFresh = true;
  void lookChanged() override { isFresh = false; }
};

TEST(ViewTree, NodesLiveOnByTheirKeys) {
  ViewTree tree;
  auto tab = view("tab", {0, 0, 20, 20}, {view("title", {0, 0, 40, 5})});
  tab.children[0].actions.onClick = [] {};
  tree.update(content({view("other", {}), tab}));
  const auto node = tree.root()->children[1];
  const auto title = node->children[0];
  auto& drawing = node->native<Drawing>();
  tab.frame.origin = {30, 30};
  tree.update(content({tab}));
  EXPECT_EQ(tree.root()->children[0], node);
  EXPECT_TRUE(title->actions.onClick);
  EXPECT_EQ(tree.areaOf(*title), ViewRect(30, 30, 40, 5));
  EXPECT_TRUE(node->native<Drawing>().isFresh) << "it is only somewhere else";
  tab.frame.size = {21, 20};
  tree.update(content({tab}));
  EXPECT_FALSE(drawing.isFresh);

  tree.update(content({}));
  EXPECT_FALSE(title->actions.onClick) << "it went with its parent";
  EXPECT_EQ(tree.areaOf(*title), std::nullopt);
  tree.update(content({tab}));
  EXPECT_NE(tree.root()->children[0], node);
  const auto last = tree.root()->children[0]->children[0];
  tree.update(view("another root", {0, 0, 5, 5}));
  EXPECT_FALSE(last->actions.onClick);
}

TEST(ViewTree, FindsTheViewsAtAPoint) {
  ViewTree tree;
  EXPECT_EQ(keysAt(tree, {1, 1}), "");
  // A band of 80 by 10 that is turned to stand upright about (50, 50), with a button at its left.
  auto band = view("band", {10, 45, 80, 10}, {view("button", {0, 0, 10, 10})});
  band.look.rotation = 90;
  tree.update(content({view("below", {0, 0, 60, 60}, {view("outside", {60, 0, 9, 9})}), band}));
  EXPECT_EQ(keysAt(tree, {50, 50}), "root below band ");
  EXPECT_EQ(keysAt(tree, {50, 85}), "root band ");
  EXPECT_EQ(keysAt(tree, {50, 15}), "root below band button ") << "its left end is below";
  EXPECT_EQ(keysAt(tree, {15, 50}), "root below ");
  EXPECT_EQ(keysAt(tree, {65, 5}), "root ") << "a child counts only inside its parent";
  // The upper left pixel of the panel is its own, and the one beside it is not.
  EXPECT_EQ(keysAt(tree, {0, 100}), "root ");
  EXPECT_EQ(keysAt(tree, {100, 100}), "");
  EXPECT_EQ(keysAt(tree, {0, 0}), "");
}

TEST(ViewTree, IsStretchedToThePanel) {
  ViewTree tree;
  EXPECT_EQ(tree.stretchTo({10, 10}), Stretch{});
  tree.update(content({}));
  EXPECT_EQ(tree.stretchTo({50, 99.5}), (Stretch{0.5, 1})) << "half a pixel is no change";
  EXPECT_EQ(tree.stretchTo({0, 200}), (Stretch{1, 2}));
}

}  // namespace
}  // namespace pellow
