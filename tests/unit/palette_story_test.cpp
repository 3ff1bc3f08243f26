#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "model/tab_zone.h"
#include "platforms/simulated/form_window.h"
#include "tests/unit/program.h"

// The pointer rests on a window's minimize button, and what its user can do from there.

namespace pellow {
namespace {

using Titles = std::vector<std::string>;

constexpr QuartzRect home{300, 120, 800, 600};
constexpr Seconds dwell = 0.25;
constexpr Seconds soon = 0.01;  // later than the hit test that was asked for

class PaletteStory : public Story {
 protected:
  simulated::Application notes = desktop.launch("Notes", "com.example.notes");
  simulated::Window other = notes.openWindow("Recipes", {100, 400, 300, 200});
  simulated::Window list = notes.openWindow("Shopping", home);

  void SetUp() override { desktop.recordHistory(); }

  void rest(AppKitPoint at, Seconds duration) {
    desktop.pointer().move(at);
    desktop.run(duration);
  }
  void show(const simulated::Window& window) {
    rest(window.minimizeButton(), dwell + soon);
    ASSERT_TRUE(isShown());
  }
  bool isShown() { return !desktop.panels().visible("pellow-palette").empty(); }
  const simulated::Panel& palette() { return desktop.panels().panel("pellow-palette"); }
  Titles rows() {
    Titles titles;
    while (const auto* row = palette().view(std::to_string(titles.size())))
      titles.push_back(row->look.accessibleName);
    return titles;
  }
  AppKitPoint row(const std::string& title) {
    return palette().centre(palette().viewNamed(title)->key);
  }
  void choose(const std::string& title) {
    desktop.pointer().click(row(title));
    desktop.runUntilQuiet();
  }
  std::ptrdiff_t calls(const std::string& of) const {
    return std::ranges::count_if(desktop.history(),
                                 [&](const std::string& call) { return call.contains(of); });
  }
  std::ptrdiff_t hitTests() const { return calls("elementAtPosition"); }
  std::vector<TabZone> storeZones(const Titles& names) {
    std::vector<TabZone> zones;
    for (const auto& name : names)
      zones.push_back({.id = desktop.uuidSource().next(), .name = name});
    desktop.userDefaults().put("zones", DefaultsData{nlohmann::json(zones).dump()});
    return zones;
  }
  AppKitPoint below(const simulated::Window& window, double points) const {
    const auto button = window.minimizeButton();
    return {button.x, button.y - points};
  }
};

TEST_F(PaletteStory, ThePointerHasToRestOnTheButton) {
  launch();
  const auto button = list.minimizeButton();
  rest(button, 0.2);
  rest(below(list, 60), 1);
  EXPECT_FALSE(isShown());

  // About on the button counts as resting, and once off it nobody asks any more.
  rest({button.x - 4, button.y}, 0.1);
  rest({20, 20}, 0.06);
  const auto off = hitTests();
  desktop.run(1);
  EXPECT_EQ(hitTests(), off);
  rest({button.x - 4, button.y}, 0.1);
  rest(button, dwell - 0.1 - soon);
  EXPECT_FALSE(isShown());
  desktop.run(2 * soon);
  EXPECT_TRUE(isShown());
  EXPECT_TRUE(list.hasFocus()) << "it never takes the keyboard";
  const auto tests = hitTests();
  desktop.run(5);
  EXPECT_TRUE(isShown());
  EXPECT_EQ(hitTests(), tests) << "a pointer that rests asks nobody";

  // Onto the palette, over the gap, and about on it.
  rest(below(list, 9), 1);
  rest(row("Pellow Window"), 1);
  rest(row("Pellow Settings…"), 1);
  EXPECT_TRUE(isShown());
  EXPECT_EQ(hitTests(), tests);
  rest(below(list, 300), 0.19);
  EXPECT_TRUE(isShown());
  desktop.run(2 * soon);
  EXPECT_FALSE(isShown());

  // The same button again; then off it, and back before it would go.
  show(list);
  rest({button.x, button.y + 11}, 0.1);
  rest(button, 1);
  EXPECT_TRUE(isShown());
  rest({button.x, button.y + 11}, 0.3);
  EXPECT_FALSE(isShown());
}

TEST_F(PaletteStory, AnotherButtonHasToBeRestedOnToo) {
  other.moveTo({500, 120});
  other.raise();
  list.moveTo({460, 120});
  launch();
  rest(list.minimizeButton() + AppKitVector{-4, 0}, 0.22);
  rest(list.minimizeButton(), 0.02);
  rest(other.minimizeButton(), 1);
  EXPECT_FALSE(isShown()) << "it comes there too soon after the last look to be looked at";
  rest({20, 20}, 1);
  show(other);
  const auto frame = palette().frame();
  rest(list.minimizeButton(), 0.1);
  rest(other.minimizeButton(), 0.06);
  const auto back = hitTests();
  desktop.run(1);
  EXPECT_EQ(palette().frame(), frame) << "it did not rest on the other one";
  EXPECT_EQ(hitTests(), back);
  rest(list.minimizeButton(), dwell + soon);
  EXPECT_NE(palette().frame(), frame);
  choose("Pellow Window");
  EXPECT_EQ(program->tabs(), Titles{"Shopping"});
}

TEST_F(PaletteStory, AGapThatIsLeftSidewaysHidesIt) {
  launch();
  show(list);
  const auto gap = palette().frame().maxY() + 2;
  rest({list.minimizeButton().x, list.minimizeButton().y + 11}, 0.06);
  rest({palette().frame().midX() + 60, gap}, 1);
  EXPECT_TRUE(isShown()) << "a hide that falls due while the pointer is inside is dropped";
  rest({palette().frame().maxX() + 10, gap}, 0.3);
  EXPECT_FALSE(isShown());
}

TEST_F(PaletteStory, AClickElsewhereAndThatWindowsTabHideItAtOnce) {
  other.moveTo({home.minX() + 40, home.minY() + 40});
  other.raise();
  launch();
  const auto dismiss = [&](bool secondary) {
    const AppKitPoint gap{palette().frame().minX() + 1, palette().frame().maxY() + 2};
    secondary ? desktop.pointer().secondaryClick(gap) : desktop.pointer().press(gap);
    desktop.run(soon);
    EXPECT_FALSE(isShown());
    desktop.pointer().release();
  };
  for (const bool secondary : {false, true}) {
    show(list);
    dismiss(secondary);
    rest(list.minimizeButton() + AppKitVector{3, 0}, dwell + soon);
    EXPECT_TRUE(isShown()) << "the same button counts again";
    dismiss(secondary);
    rest(other.minimizeButton(), dwell + soon);
    EXPECT_TRUE(isShown()) << "so does the place where it stood";
    rest(list.minimizeButton(), 0.1);
    desktop.pointer().secondaryClick(list.minimizeButton());
    const auto asked = hitTests();
    desktop.run(1);
    EXPECT_EQ(hitTests(), asked) << "the wait on a button ends with it, too";
    EXPECT_FALSE(isShown());
    rest({20, 20}, 1);
  }
  other.close();
  show(list);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.run(0.1);
  EXPECT_FALSE(isShown());
}

TEST_F(PaletteStory, ItsRowsAreForZonesAndTheWayOfPuttingAway) {
  struct Case {
    Titles zones;
    const char* mechanism;
    const char* scope;
    Titles rows;
  };
  const std::string settings = "Pellow Settings…";
  const std::vector<Case> cases{
      {{"Tabs"},
       "offscreen",
       "window",
       {"Pellow Window", "Pellow All Windows of App", "", settings}},
      {{"Tabs", "Work"},
       "minimize",
       "window",
       {"Pellow to Tabs", "Pellow to Work", "Pellow All Windows of App to Tabs",
        "Pellow All Windows of App to Work", "", settings}},
      {{"Tabs"}, "hideApp", "window", {"Pellow Notes", "", settings}},
      {{"A", "B", "C"},
       "offscreen",
       "app",
       {"Pellow Notes to A", "Pellow Notes to B", "Pellow Notes to C", "", settings}}};
  for (const auto& [zones, mechanism, scope, expected] : cases) {
    program.reset();
    storeZones(zones);
    desktop.userDefaults().put("mechanism", mechanism);
    desktop.userDefaults().put("tabScope", scope);
    launch();
    rest({20, 20}, 1);
    show(list);
    EXPECT_EQ(rows(), expected);
    const auto actions = static_cast<double>(expected.size() - 1);
    EXPECT_EQ(palette().frame().height(), 2 * 5 + 26 * actions + 9);
    EXPECT_EQ(palette().frame().width(), 268);
    EXPECT_EQ(palette().frame().maxY(), list.minimizeButton().y - 7 - 4);
    EXPECT_EQ(palette().frame().midX(), list.minimizeButton().x);
  }
}

TEST_F(PaletteStory, ARowPutsTheWindowOrItsApplicationIntoTheZone) {
  const auto zones = storeZones({"Tabs", "Work"});
  launch();
  const auto inWork = [&] {
    Titles titles;
    for (const auto& tab : program->controller().store().tabs())
      if (tab.zoneID == zones[1].id) titles.push_back(tab.title);
    return titles;
  };
  show(list);
  choose("Pellow to Work");
  EXPECT_FALSE(isShown());
  EXPECT_EQ(inWork(), Titles{"Shopping"});
  program->pressRestoreAll();
  rest({20, 20}, 1);
  show(list);
  choose("Pellow All Windows of App to Work");
  EXPECT_EQ(inWork(), (Titles{"Shopping", "Recipes"}));
  program->pressRestoreAll();
  rest({20, 20}, 1);
  show(list);
  choose("Pellow Settings…");
  EXPECT_TRUE(desktop.formWindows().window("pellow-settings").isVisible());
  EXPECT_FALSE(isShown());
}

TEST_F(PaletteStory, ItStaysInsideTheDisplayOfTheButton) {
  desktop.screens().plug(2, {1440, 0, 1000, 700});
  launch();
  struct Case {
    QuartzPoint window;
    double minX;  // of the palette
    bool isBelow;
  };
  const auto visible = desktop.screens().all().front().visibleFrame;
  for (const auto& [window, minX, isBelow] :
       {Case{{0, 100}, 4, true}, Case{{1400, 100}, 1440 - 268 - 4, true},
        Case{{600, 900 - visible.minY() - 60}, 600 + 33 - 134, false},
        Case{{2300, 300}, 2440 - 268 - 4, true}}) {
    list.moveTo(window);
    list.raise();
    show(list);
    const auto frame = palette().frame();
    const auto button = list.minimizeButton();
    EXPECT_EQ(frame.minX(), minX);
    EXPECT_EQ(isBelow ? button.y - 7 - frame.maxY() : frame.minY() - button.y - 7, 4);
    rest({button.x, isBelow ? button.y - 9 : button.y + 9}, 1);
    EXPECT_TRUE(isShown()) << "the gap is protected on either side";
    rest({700, 300}, 1);
    EXPECT_FALSE(isShown());
  }
}

TEST_F(PaletteStory, FewLooksHoweverFastThePointerMoves) {
  launch();
  rest({800, 200}, 1);
  const auto before = hitTests();
  const auto ownersBefore = calls("asks for the process");
  for (int event = 0; event < 1300; ++event) {
    desktop.pointer().move({800 + 0.3 * (event % 300), 200});
    desktop.run(0.001);
  }
  const auto looks = hitTests() - before;
  EXPECT_LE(looks, 26);
  EXPECT_GE(looks, 20);
  const auto windows = calls("asks for the process") - ownersBefore - looks;
  EXPECT_EQ(windows, 3) << "every 0.6 s at the most";

  desktop.run(1);
  rest({800, 210}, 1);
  const auto rested = hitTests();
  for (int step = 1; step < 20; ++step) rest({800 + 0.1 * step, 210}, 0.1);
  EXPECT_EQ(hitTests(), rested) << "less than two points";
  rest({803, 210}, 0.1);
  EXPECT_EQ(hitTests(), rested + 1);
}

TEST_F(PaletteStory, ASlowApplicationDelaysOnlyItself) {
  const auto mail = desktop.launch("Mail", "com.example.mail");
  mail.openWindow("Inbox", {10, 40, 200, 300});
  launch();
  mail.hangs();
  const auto asked = hitTests();
  for (int event = 0; event < 90; ++event) {
    desktop.pointer().move({100.0 + event / 4.0, 600});
    desktop.run(0.001);
  }
  desktop.run(0.04);
  EXPECT_EQ(hitTests(), asked + 1) << "one question at a time";
  rest(list.minimizeButton(), 0.1);  // passed over: the answer is still awaited
  desktop.pointer().move(list.minimizeButton() + AppKitVector{3, 0});
  desktop.run(dwell + soon);
  EXPECT_TRUE(isShown());
}

TEST_F(PaletteStory, WithoutProcessOrButtonOrOfOurOwnThereIsNoPalette) {
  desktop.userDefaults().put("useThumbnails", true);
  launch();
  const auto strip = desktop.panels().panel("pellow-strip").frame();
  rest({strip.midX(), strip.midY()}, 1);
  EXPECT_EQ(calls("AXMinimized of panel"), 0) << "no picture of a panel of our own";
  list.fails("pid", AXError::invalidUIElement);
  rest(list.minimizeButton(), 1);
  EXPECT_FALSE(isShown());
  list.behaves().withoutMinimizeButton();
  rest({20, 20}, 1);
  rest(list.minimizeButton(), 1);
  EXPECT_FALSE(isShown());
}

}  // namespace
}  // namespace pellow
