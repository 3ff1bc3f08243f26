#include "platform/panels.h"

#include <fmt/format.h>

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

constexpr AppKitRect place{100, 200, 200, 100};

View view(std::string key, ViewRect frame, ViewActions actions = {}) {
  return {.key = std::move(key),
          .frame = frame,
          .look = {.content = Backdrop{}},
          .actions = std::move(actions)};
}

class PanelsContract : public ContractTest {
 protected:
  // At `place`.
  std::unique_ptr<Panel> show(View root, const std::string& name = "pellow-strip") {
    auto panel = platform.panels().makePanel(name, WindowShadow::no);
    EXPECT_FALSE(panel->isVisible());
    panel->setContent(root);
    panel->setFrame(place);
    panel->orderFront();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(until([&] { return host->showsPanel(name); }));
    return panel;
  }
};

TEST_F(PanelsContract, AnAnimationArrivesOnceUnlessItIsCutShort) {
  auto panel = show(view("root", {0, 0, 200, 100}));
  const AppKitRect far{400, 300, 100, 50};
  panel->animate(far, 0.5, 0.05, AnimationTiming::easeInOut, note("arrived"));
  EXPECT_EQ(panel->frame(), far) << "it answers where it is going";
  EXPECT_TRUE(hears({"arrived"}));

  panel->animate(place, 1, 3600, AnimationTiming::linear, note("too late"));
  panel->animate(far, 1, 0, AnimationTiming::linear, note("at once, but later"));
  EXPECT_TRUE(heard.empty());
  EXPECT_TRUE(hears({"at once, but later"}));
  panel->animate(place, 1, 0, AnimationTiming::easeOut, note("never"));
  panel->setFrame(place);
  EXPECT_TRUE(hearsNothing());
  panel->animate(far, 1, 0, AnimationTiming::easeOut, note("never"));
  panel.reset();
  EXPECT_TRUE(hearsNothing());
}

// With the pointer.
class PanelsUnderThePointer : public PanelsContract {
 protected:
  void SetUp() override {
    if (!host->letsUsAct()) GTEST_SKIP() << "Allow this process to use Accessibility first.";
    host->movePointer({600, 30});
  }

  // Where the point of a panel at `place` is.
  QuartzPoint at(double x, double y) { return toQuartz({place.minX() + x, place.minY() + y}); }

  void click(QuartzPoint point) {
    host->movePointer(point);
    host->pressButton();
    host->releaseButton();
  }
};

TEST_F(PanelsUnderThePointer, TheInnermostViewWithTheActionGetsIt) {
  auto root = view(
      "root", {0, 0, 200, 100},
      {.onClick = note("root"), .onHoverChanged = noteHover("root"), .drag = noteDrag("root")});
  auto half = view("half", {100, 0, 100, 100}, {.onHoverChanged = noteHover("half")});
  half.children.push_back(view("button", {50, 0, 50, 100}, {.onClick = note("button")}));
  root.children.push_back(std::move(half));
  const auto panel = show(std::move(root));
  click(at(50, 50));
  EXPECT_TRUE(hears({"into root", "root"}));
  click(at(110, 50));
  EXPECT_TRUE(hears({"into half", "root"}));
  click(at(175, 50));
  EXPECT_TRUE(hears({"button"}));
  host->pressButton();
  host->movePointer(at(120, 50));
  host->releaseButton();
  host->movePointer({600, 30});
  EXPECT_TRUE(hears({"out of half", "out of root"}))
      << "released elsewhere, it is no click, and no drag either";
}

TEST_F(PanelsUnderThePointer, ADragBeginsAfterThreePointsAndGoesOnWhateverBecomesOfTheView) {
  auto panel =
      show(view("root", {0, 0, 200, 100}, {.onClick = note("click"), .drag = noteDrag("drag")}));
  host->movePointer(at(100, 50));
  host->pressButton();
  host->movePointer(at(102, 50));
  EXPECT_TRUE(hearsNothing());
  host->movePointer(at(103, 49));
  EXPECT_TRUE(hears({"drag began", "drag by 3 -1"}));
  panel->setContent(view("another", {0, 0, 200, 100}, {.drag = noteDrag("another")}));
  host->movePointer(at(400, 250));
  EXPECT_TRUE(hears({"drag by 300 200"}));
  host->releaseButton();
  EXPECT_TRUE(hears({"drag ended"}));

  host->movePointer(at(100, 50));
  host->pressButton();
  host->movePointer(at(110, 50));
  EXPECT_TRUE(hears({"another began", "another by 10 0"}));
  panel->orderOut();
  EXPECT_TRUE(hears({"another ended"}));
  host->releaseButton();
  panel->orderFront();
  ASSERT_TRUE(until([&] { return host->showsPanel("pellow-strip"); }));
  host->movePointer(at(100, 50));
  host->pressButton();
  host->movePointer(at(110, 50));
  EXPECT_TRUE(hears({"another began", "another by 10 0"}));
  panel.reset();
  host->releaseButton();
  EXPECT_TRUE(hearsNothing());
}

TEST_F(PanelsUnderThePointer, ACallbackMayReplaceItsViewAndEndItsPanel) {
  std::unique_ptr<Panel> panel;
  panel = show(view("root", {0, 0, 200, 100}, {.onClick = [&] {
                      heard.push_back("replaced");
                      panel->setContent(view("root", {0, 0, 200, 100}, {.onClick = [&] {
                                               panel.reset();
                                               heard.push_back("ended");
                                             }}));
                    }}));
  click(at(100, 50));
  EXPECT_TRUE(hears({"replaced"}));
  click(at(100, 50));
  EXPECT_TRUE(hears({"ended"}));
  EXPECT_TRUE(hearsNothing());
}

TEST_F(PanelsUnderThePointer, HoverSurvivesANewContentAndFollowsIt) {
  const auto content = [&](const std::string& name, double x) {
    auto root = view("root", {0, 0, 200, 100});
    root.children.push_back(view("tab", {x, 0, 50, 100}, {.onHoverChanged = noteHover(name)}));
    return root;
  };
  const auto panel = show(content("tab", 0));
  host->movePointer(at(20, 50));
  EXPECT_TRUE(hears({"into tab"}));
  panel->setContent(content("same tab", 0));
  host->movePointer(at(80, 50));
  EXPECT_TRUE(hears({"out of same tab"})) << "it was not entered a second time";
  panel->setContent(content("tab", 60));
  EXPECT_TRUE(hears({"into tab"})) << "a view that comes under the pointer is entered";
  panel->setFrame({500, 400, 200, 100});
  EXPECT_TRUE(hears({"out of tab"})) << "a panel that goes from under the pointer is left";
}

TEST_F(PanelsUnderThePointer, AContextMenuIsAskedForAtEverySecondaryClick) {
  int asked = 0;
  const auto panel =
      show(view("root", {0, 0, 200, 100}, {.contextMenu = [&] {
                  const auto number = std::to_string(++asked);
                  return Menu{{{.title = "First", .onChosen = note("first")},
                               {.title = "Item " + number, .onChosen = note("item " + number)}}};
                }}));
  host->chooseFromContextMenu(at(60, 50), "Item 1");
  EXPECT_TRUE(hears({"item 1"}));
  host->chooseFromContextMenu(at(60, 50), "First");
  EXPECT_TRUE(hears({"first"}));
  EXPECT_EQ(asked, 2);
}

TEST_F(PanelsUnderThePointer, AnOpenContextMenuHoldsTheHoverOfItsPanel) {
  const auto menu = [&] { return Menu{{{.title = "The only item", .onChosen = note("chosen")}}}; };
  const auto panel = show(
      view("root", {0, 0, 200, 100}, {.onHoverChanged = noteHover("root"), .contextMenu = menu}));
  host->chooseFromContextMenu(at(195, 50), "The only item");  // which is beside the panel
  host->movePointer({600, 30});
  EXPECT_TRUE(hears({"into root", "chosen", "out of root"}));
}

TEST_F(PanelsUnderThePointer, ThePointerGoesThroughAPanelThatIgnoresIt) {
  const auto below = show(view("root", {0, 0, 200, 100},
                               {.onClick = note("below"), .onHoverChanged = noteHover("below")}));
  const auto above = platform.panels().makePanel("pellow-flight", WindowShadow::no);
  above->setContent(view("root", {0, 0, 200, 100},
                         {.onClick = note("above"), .onHoverChanged = noteHover("above")}));
  above->setFrame(place);
  above->setIgnoresMouseEvents(true);
  above->orderFront();
  ASSERT_TRUE(until([&] { return host->showsPanel("pellow-flight"); }));
  host->movePointer(at(100, 50));
  EXPECT_TRUE(hears({"into below"}));
  click(at(100, 50));
  EXPECT_TRUE(hears({"below"}));
  above->setIgnoresMouseEvents(false);
  above->orderFront();  // the click may have raised the other one
  EXPECT_TRUE(hears({"out of below", "into above"}));
  click(at(100, 50));
  EXPECT_TRUE(hears({"above"}));
}

TEST_F(PanelsUnderThePointer, AClickActivatesNothing) {
  const auto guest = host->launch("Guest");
  guest->open("Document", {500, 150, 400, 300});
  ASSERT_TRUE(bringToFront(*guest));
  const auto panel = show(view("root", {0, 0, 200, 100}, {.onClick = note("click")}));
  click(at(100, 50));
  EXPECT_TRUE(hears({"click"}));
  EXPECT_EQ(platform.workspace().frontmostApplication(), guest->pid());
}

}  // namespace
}  // namespace pellow::contract
