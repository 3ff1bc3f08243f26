#include "platforms/linux/qt/qt_panels.h"

#include <fmt/format.h>

#include <QAccessible>
#include <QWidget>
#include <algorithm>
#include <cmath>

#include "platforms/linux/qt/panel_accessible.h"
#include "tests/harness/monitors.h"
#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

constexpr std::uint8_t rightButton = 3;

class QtPanelsTest : public QtDesktopTest {
 protected:
  void startQt(int scale) {
    QtDesktopTest::startQt(scale);
    panels.emplace(queue,
                   QtPanels::Surroundings{
                       .toPixels = [this](const AppKitRect& rect) { return x11->toPixels(rect); },
                       .stretchesDocks = [] { return false; },
                       .serverAnswers = [this] { return x11->serverAnswers(); }});
  }
  void SetUp() override { startQt(1); }

  std::unique_ptr<Panel> show(const std::string& name, const View& root, AppKitRect frame) {
    auto panel = panels->makePanel(name, WindowShadow::yes);
    panel->setContent(root);
    panel->setFrame(frame);
    panel->orderFront();
    EXPECT_TRUE(until([&] { return shown(name) != 0; }));
    return panel;
  }

  std::optional<QtPanels> panels;
};

View view(std::string key, ViewRect frame, ViewActions actions = {}) {
  return {.key = std::move(key), .frame = frame, .actions = std::move(actions)};
}

// A panel of 200 by 100 points whose pixels on the screen run from (100, 600) to (300, 700).
constexpr AppKitRect place{100, 100, 200, 100};

TEST_F(QtPanelsTest, AssistiveProgramsReadAndPressTabs) {
  installPanelAccessibility();
  auto root = view("root", {0, 0, 200, 100});
  root.look.accessibleName = "Work";
  root.children.push_back(view("tab", {10, 10, 40, 40}, {.onClick = note("click")}));
  root.children[0].look.accessibleName = "Letter";
  root.children.push_back(view("backdrop", {0, 0, 5, 5}));
  const auto panel = show("pellow-strip", root, place);
  auto* const strip =
      QAccessible::queryAccessibleInterface(QWidget::find(static_cast<WId>(shown("pellow-strip"))));
  ASSERT_TRUE(strip);
  EXPECT_EQ(strip->role(), QAccessible::ToolBar);
  EXPECT_EQ(strip->text(QAccessible::Name), "Work");
  ASSERT_EQ(strip->childCount(), 1);
  auto* const tab = strip->child(0);
  EXPECT_EQ(tab->text(QAccessible::Name), "Letter");
  EXPECT_EQ(tab->role(), QAccessible::Button);
  // Once Qt has heard of the panel's place.
  EXPECT_TRUE(until([&] { return tab->rect() == QRect(110, 650, 40, 40); }));
  tab->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(hears({"click"}));
}

TEST_F(QtPanelsTest, ThePointerMeetsViewsWhereTheyAreDrawn) {
  auto root = view("root", {0, 0, 200, 100});
  root.children.push_back(
      view("upright", {70, 40, 60, 20}, {.onHoverChanged = noteHover("upright")}));
  root.children[0].look.rotation = 90;
  const auto panel = show("pellow-strip", root, place);
  desktop.movePointer(175, 650);
  desktop.movePointer(200, 625);
  EXPECT_TRUE(hears({"into upright"}));
  // Half as large, the content is drawn half as large: up to 15 pixels above and below (150, 675).
  panel->setFrame({100, 100, 100, 50});
  EXPECT_TRUE(hears({"out of upright"}));
  desktop.movePointer(150, 662);
  EXPECT_TRUE(hears({"into upright"}));
  desktop.movePointer(157, 675);
  EXPECT_TRUE(hears({"out of upright"}));
}

TEST_F(QtPanelsTest, AContextMenuIsChosenFromByKeyboard) {
  const auto menu = [&] {
    heard.emplace_back("asked");
    return Menu{{{.title = "First", .onChosen = note("first")},
                 {.title = "Second", .onChosen = note("second")}}};
  };
  const auto panel =
      show("pellow-strip", view("root", {0, 0, 200, 100}, {.contextMenu = menu}), place);
  const auto menuWindow = [&] { return shown("pellow-menu"); };
  const auto open = [&] {
    desktop.click(150, 650, rightButton);
    ASSERT_TRUE(until([&] { return menuWindow() != 0; }));
    EXPECT_TRUE(hears({"asked"}));
  };
  const auto isClosed = [&] { return until([&] { return menuWindow() == 0; }); };

  ASSERT_NO_FATAL_FAILURE(open());
  const auto items = desktop.content(menuWindow());
  EXPECT_EQ(std::pair(items.x, items.y), std::pair(150, 650));
  for (const auto press : {key::down, key::down, key::returnKey}) desktop.type({press});
  EXPECT_TRUE(hears({"second"}));
  EXPECT_TRUE(isClosed());

  ASSERT_NO_FATAL_FAILURE(open());
  desktop.click(900, 100);
  EXPECT_TRUE(isClosed());
  ASSERT_NO_FATAL_FAILURE(open());
  desktop.type({key::escape});
  EXPECT_TRUE(isClosed());
  EXPECT_TRUE(heard.empty());
}

TEST_F(QtPanelsTest, AnOpenContextMenuHoldsTheHoverOfItsPanel) {
  const auto menu = [&] {
    heard.emplace_back("asked");
    return Menu{{{.title = "The only item", .onChosen = note("chosen")}}};
  };
  auto panel =
      show("pellow-strip",
           view("root", {0, 0, 200, 100}, {.onHoverChanged = noteHover("it"), .contextMenu = menu}),
           place);
  const auto other =
      show("pellow-palette", view("root", {0, 0, 200, 100}, {.onHoverChanged = noteHover("other")}),
           {600, 100, 200, 100});
  const auto isOpen = [&] { return shown("pellow-menu") != 0; };
  const auto closes = [&] { return until([&] { return !isOpen(); }); };
  const auto open = [&] {
    desktop.click(150, 650, rightButton);
    EXPECT_TRUE(until(isOpen));
  };

  open();
  other->orderOut();
  other->orderFront();
  work();
  EXPECT_TRUE(isOpen()) << "another panel has nothing to do with it";
  for (const int x : {155, 110}) {  // to the menu, with the panel below, and beside the menu
    desktop.movePointer(x, 655);
    desktop.type({key::escape});
    EXPECT_TRUE(closes());
    open();
  }
  EXPECT_TRUE(hears({"into it", "asked", "asked", "asked"})) << "it was not left in between";
  desktop.movePointer(700, 650);
  desktop.type({key::escape});
  EXPECT_TRUE(closes());
  EXPECT_TRUE(until([&] { return heard.size() == 2; }));
  std::ranges::sort(heard);  // the panels are told one by one, each when its turn comes
  EXPECT_TRUE(hears({"into other", "out of it"}));

  open();
  EXPECT_TRUE(hears({"out of other", "into it", "asked"}));
  panel.reset();
  EXPECT_TRUE(closes());
  desktop.movePointer(700, 650);
  EXPECT_TRUE(hears({"into other"}));
}

TEST_F(QtPanelsTest, AnAnimationMovesAndFadesTheWindow) {
  const auto panel = show("pellow-flight", view("root", {0, 0, 200, 100}), place);
  const auto window = shown("pellow-flight");
  const auto opacity = [&] {
    const auto values = desktop.values(window, "_NET_WM_WINDOW_OPACITY");
    return values.empty() ? 1 : values[0] / double(0xffffffff);
  };
  const AppKitRect far{600, 500, 100, 50};
  panel->animate(far, 0.25, 0.1, AnimationTiming::easeInOut, note("arrived"));
  EXPECT_TRUE(hears({"arrived"}));
  EXPECT_TRUE(until([&] { return desktop.content(window) == PixelRect{600, 250, 100, 50}; }));
  EXPECT_TRUE(until([&] { return std::abs(opacity() - 0.25) < 0.01; })) << opacity();

  panel->animate(place, 1, 0, AnimationTiming::linear, note("back"));
  EXPECT_TRUE(hears({"back"}));
  EXPECT_TRUE(until([&] { return opacity() == 1; }));
  panel->animate(far, 0.5, 3600, AnimationTiming::easeOut, note("never"));
  panel->setFrame({0, 0, 200, 100});
  EXPECT_TRUE(until([&] { return desktop.content(window) == PixelRect{0, 700, 200, 100}; }));
}

TEST_F(QtPanelsTest, ThePointerGoesThroughAPanelThatIgnoresIt) {
  const auto root = [&](const std::string& name, double cornerRadius) {
    auto panel =
        view("root", {0, 0, 200, 100}, {.onClick = note(name), .onHoverChanged = noteHover(name)});
    panel.look = {.content = Backdrop{}, .cornerRadius = cornerRadius};
    return panel;
  };
  const auto below = show("pellow-strip", root("below", 10), place);
  const auto above = panels->makePanel("pellow-flight", WindowShadow::no);
  above->setFrame(place);
  above->setIgnoresMouseEvents(true);
  // Neither a new shape nor showing it again changes that.
  for (const double cornerRadius : {10, 40}) {
    above->setContent(root("above", cornerRadius));
    above->orderFront();
    ASSERT_TRUE(until([&] { return shown("pellow-flight") != 0; }));
    desktop.movePointer(200, 650);
    EXPECT_TRUE(hears({"into below"}));
    desktop.click(200, 650);
    EXPECT_TRUE(hears({"below"}));
    desktop.movePointer(900, 50);
    EXPECT_TRUE(hears({"out of below"}));
    above->orderOut();
  }
}

class ScaledQtPanelsTest : public QtPanelsTest {
 protected:
  void SetUp() override {
    monitors.plug("left", {0, 0, 640, 800});
    monitors.plug("right", {640, 100, 640, 600}, true);
    startQt(2);
  }

  Monitors monitors{desktop.display()};
};

// The primary monitor is the right one, so its bottom left is the origin.
TEST_F(ScaledQtPanelsTest, PanelsStandWhereTheyAreAskedToOnEveryMonitor) {
  ASSERT_EQ(DisplayScale::now(), 2);
  const auto panel = show(
      "pellow-strip",
      view("root", {0, 0, 50, 30}, {.onHoverChanged = noteHover("it"), .drag = noteDrag("drag")}),
      {10, 20, 50, 30});
  const auto window = shown("pellow-strip");
  const auto standsAt = [&](PixelRect expected) {
    return until([&] { return desktop.content(window) == expected; });
  };
  EXPECT_TRUE(standsAt({660, 600, 100, 60})) << desktop.content(window);
  desktop.movePointer(700, 630);
  EXPECT_TRUE(hears({"into it"}));
  panel->setFrame({-100, 20, 50, 30});
  EXPECT_TRUE(standsAt({440, 600, 100, 60})) << desktop.content(window);
  EXPECT_TRUE(hears({"out of it"}));
  panel->animate({-320, 320, 40, 30}, 1, 0.05, AnimationTiming::linear, note("arrived"));
  EXPECT_TRUE(hears({"arrived"}));
  EXPECT_TRUE(standsAt({0, 0, 80, 60})) << desktop.content(window);

  // From one monitor to the other.
  desktop.movePointer(40, 30);
  EXPECT_TRUE(hears({"into it"}));
  desktop.press();
  desktop.movePointer(60, 30);
  EXPECT_TRUE(hears({"drag began", "drag by 10 0"}));
  desktop.movePointer(840, 130);
  EXPECT_TRUE(hears({"drag by 400 -50"}));
  panel->setFrame({80, 270, 40, 30});  // it follows the pointer, which changes nothing
  desktop.movePointer(860, 130);
  EXPECT_TRUE(hears({"drag by 410 -50"}));
  desktop.release();
}

}  // namespace
}  // namespace pellow::desktop
