#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platforms/simulated/simulated_desktop.h"
#include "platforms/simulated/simulated_platform.h"

// What the desktop tells its observers, in which order, and what it answers when things go wrong.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;

const QuartzRect home{100, 120, 800, 600};
constexpr auto miniaturized = "AXWindowMiniaturized";
constexpr auto focusChanged = "AXFocusedWindowChanged";

class SimulatedEventsTest : public testing::Test {
 protected:
  SimulatedEventsTest() {
    auto& workspace = platform.workspace();
    const auto note = [this](const char* what) {
      return
          [this, what](ProcessID pid) { heard.push_back(fmt::format("{} {}", what, name(pid))); };
    };
    observers.push_back(workspace.onDidLaunchApplication(note("launch")));
    observers.push_back(workspace.onDidActivateApplication(note("activate")));
    observers.push_back(workspace.onDidTerminateApplication(note("terminate")));
  }

  std::string name(ProcessID pid) {
    const auto running = platform.workspace().application(pid);
    return running ? running->localizedName : "?";
  }

  // Hears everything that the application and its windows have to say.
  void listenTo(const SimulatedApplication& application) {
    for (const auto* what : {miniaturized, focusChanged})
      listen(application.element(), what, std::string(what).substr(2, 5));
    for (const auto& window : application.windows())
      listen(window.element(), "AXUIElementDestroyed", "gone");
  }

  void listen(const AXElement& element, const char* notification, std::string word) {
    auto observer = platform.accessibility().observe(
        element, notification, [this, word = std::move(word)](const AXElement& about) {
          const auto title = about.copyAttribute("AXTitle");
          heard.push_back(word + " " + (title ? std::get<std::string>(*title) : "?"));
        });
    ASSERT_TRUE(observer);
    observers.push_back(std::move(*observer));
  }

  Lines heardAfter(const std::function<void()>& act) {
    desktop.runUntilQuiet();
    heard.clear();
    act();
    EXPECT_TRUE(heard.empty()) << "nothing reaches the program but in its main loop";
    desktop.runUntilQuiet();
    return heard;
  }

  AXElement minimizeButtonOf(const SimulatedWindow& window) {
    return std::get<AXElement>(window.element().copyAttribute("AXMinimizeButton").value());
  }

  std::string at(QuartzPoint point) {
    const auto found = platform.accessibility().elementAtPosition(systemWide, point);
    if (!found) return found.error() == AXError::noValue ? "nothing" : "an error";
    const auto read = [&](const AXElement& element, const char* attribute) {
      const auto value = element.copyAttribute(attribute);
      return value ? std::get<std::string>(*value) : "-";
    };
    const auto parent = found->copyAttribute("AXParent");
    return fmt::format("{} {} in {}", read(*found, "AXRole"), read(*found, "AXSubrole"),
                       read(std::get<AXElement>(*parent), "AXTitle"));
  }

  SimulatedPlatform platform;
  SimulatedDesktop& desktop = platform.desktop();
  AXElement systemWide = platform.accessibility().systemWide();
  Lines heard;
  std::vector<Subscription> observers;
};

TEST_F(SimulatedEventsTest, EveryActIsToldInItsOrder) {
  EXPECT_EQ(heardAfter([&] { desktop.launch("Notes"); }),
            (Lines{"launch Notes", "activate Notes"}));
  const auto notes = desktop.application("Notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto letter = notes.openWindow("Letter", {900, 120, 300, 600});
  const auto mail = desktop.launch("Mail");
  const auto inbox = mail.openWindow("Inbox", {0, 30, 90, 90});
  listenTo(notes);
  listenTo(mail);
  desktop.launch("agent", std::nullopt, ActivationPolicy::prohibited);
  desktop.runUntilQuiet();
  EXPECT_EQ(heard.back(), "launch agent") << "which takes the focus from nobody";

  // A click on a window of another application: its focused one, then another one.
  EXPECT_EQ(heardAfter([&] { desktop.click({1000, 400}); }), Lines{"activate Notes"});
  mail.activate();
  EXPECT_EQ(heardAfter([&] { desktop.click({200, 400}); }),
            (Lines{"activate Notes", "Focus Shopping"}));
  EXPECT_TRUE(heardAfter([&] { desktop.click({200, 400}); }).empty());

  // The focus moves on within the application, wherever the minimize came from.
  EXPECT_EQ(heardAfter([&] { desktop.click(list.minimizeButton()); }),
            (Lines{"Windo Shopping", "Focus Letter"}));
  EXPECT_EQ(heardAfter([&] { list.unminimize(); }), Lines{"Focus Shopping"});
  EXPECT_EQ(heardAfter([&] { letter.element().performAction("AXRaise").value(); }),
            Lines{"Focus Letter"});
  EXPECT_EQ(heardAfter([&] { list.element().setAttribute("AXMinimized", true).value(); }),
            Lines{"Windo Shopping"});
  EXPECT_EQ(heardAfter([&] { letter.minimize(); }), Lines{"Windo Letter"}) << "nothing to focus";
  EXPECT_TRUE(heardAfter([&] { letter.minimize(); }).empty());
  EXPECT_TRUE(notes.isFrontmost());

  // Who takes the place of the frontmost application had its focus all the time.
  EXPECT_EQ(heardAfter([&] { platform.workspace().hide(notes.pid()); }), Lines{"activate Mail"});
  EXPECT_TRUE(heardAfter([&] { notes.unhide(); }).empty());
  EXPECT_EQ(heardAfter([&] { platform.workspace().activate(notes.pid()); }),
            Lines{"activate Notes"});
  EXPECT_EQ(heardAfter([&] { list.unminimize(); }), Lines{"Focus Shopping"});
  EXPECT_EQ(heardAfter([&] { platform.process().activate(); }), Lines{"activate Pellow"});
  EXPECT_EQ(heardAfter([&] { mail.kill(); }), Lines{"terminate ?"})
      << "no window says that it goes";
  notes.activate();
  EXPECT_EQ(heardAfter([&] { letter.close(); }), Lines{"gone ?"});
  desktop.launch("Web");
  notes.activate();
  EXPECT_EQ(heardAfter([&] { notes.quit(); }), (Lines{"gone ?", "activate Web", "terminate ?"}));
  EXPECT_FALSE(inbox.exists());
}

TEST_F(SimulatedEventsTest, MinimizedWindowsComeBackByMenuAndDock) {
  const auto notes = desktop.launch("Notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto letter = notes.openWindow("Letter", home);
  const auto mail = desktop.launch("Mail");
  listenTo(notes);
  list.minimize();
  letter.minimize();
  EXPECT_EQ(heardAfter([&] { notes.activate(); }), Lines{"activate Notes"});
  EXPECT_FALSE(notes.focusedWindow()) << "in front, and nothing to see";
  EXPECT_EQ(heardAfter([&] { list.chooseFromWindowMenu(); }), Lines{"Focus Shopping"});
  EXPECT_TRUE(list.hasFocus());

  // From the Dock, whoever is in front; a window that shows needs no other.
  mail.activate();
  EXPECT_EQ(heardAfter([&] { letter.chooseFromWindowMenu(); }),
            (Lines{"activate Notes", "Focus Letter"}));
  letter.minimize();
  mail.activate();
  EXPECT_EQ(heardAfter([&] { notes.clickInDock(); }), Lines{"activate Notes"});
  EXPECT_TRUE(letter.isMinimized());
  list.minimize();
  mail.activate();
  EXPECT_EQ(heardAfter([&] { notes.clickInDock(); }), (Lines{"activate Notes", "Focus Shopping"}));
  notes.hide();
  EXPECT_EQ(heardAfter([&] { letter.chooseFromWindowMenu(); }),
            (Lines{"activate Notes", "Focus Letter"}));
  EXPECT_TRUE(letter.isVisible() && letter.isInFront());
  mail.clickInDock();
  EXPECT_TRUE(mail.isFrontmost()) << "without any window";
}

TEST_F(SimulatedEventsTest, TheDesktopKnowsWhoPutAWindowAway) {
  const auto notes = desktop.launch("Notes");
  const auto list = notes.openWindow("Shopping", home);
  EXPECT_EQ(list.minimizedBy(), std::nullopt);
  EXPECT_EQ(list.movedBy(), std::nullopt);
  minimizeButtonOf(list).performAction("AXPress").value();
  list.minimize();
  EXPECT_EQ(list.minimizedBy(), Actor::program) << "it was minimized already";
  list.unminimize();
  EXPECT_EQ(list.minimizedBy(), std::nullopt);
  heardAfter([&] { desktop.click(list.minimizeButton()); });
  list.element().setAttribute("AXMinimized", true).value();
  EXPECT_EQ(list.minimizedBy(), Actor::user);

  platform.workspace().hide(notes.pid());
  EXPECT_EQ(notes.hiddenBy(), Actor::program);
  notes.unhide();
  EXPECT_EQ(notes.hiddenBy(), std::nullopt);
  notes.hide();
  EXPECT_EQ(notes.hiddenBy(), Actor::user);

  list.refusesToMove().element().setAttribute("AXPosition", QuartzPoint{9, 9}).value();
  EXPECT_EQ(list.movedBy(), std::nullopt) << "it stayed";
  list.behaves().element().setAttribute("AXPosition", QuartzPoint{9, 9}).value();
  EXPECT_EQ(list.movedBy(), Actor::program);
  list.moveTo({100, 100});
  EXPECT_EQ(list.movedBy(), Actor::user);
}

TEST_F(SimulatedEventsTest, ObserversCanBeRefusedAndGoUnheard) {
  auto& accessibility = platform.accessibility();
  const auto notes = desktop.launch("Notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto refusal = [&](const AXElement& element, const char* notification) {
    return accessibility.observe(element, notification, [](const AXElement&) {}).error();
  };
  EXPECT_EQ(refusal(list.element(), focusChanged), AXError::notificationUnsupported);
  EXPECT_EQ(refusal(notes.element(), "AXUIElementDestroyed"), AXError::notificationUnsupported);
  notes.refusesObservers();
  EXPECT_EQ(refusal(notes.element(), focusChanged), AXError::cannotComplete);
  notes.refusesObservers(false);
  desktop.failNext(focusChanged, AXError::notImplemented, AXCall::observe);
  EXPECT_EQ(refusal(notes.element(), focusChanged), AXError::notImplemented);
  desktop.setTrusted(false);
  EXPECT_EQ(refusal(notes.element(), focusChanged), AXError::apiDisabled);
  EXPECT_EQ(accessibility.elementAtPosition(systemWide, {200, 300}).error(), AXError::apiDisabled);

  // Nothing is heard while the permission is withdrawn, nor by one who has left; the rest is late
  // and in order.
  desktop.setTrusted(true);
  listenTo(notes);
  desktop.setTrusted(false);
  EXPECT_TRUE(heardAfter([&] { list.minimize(); }).empty());
  desktop.setTrusted(true);
  desktop.delayAnnouncements(2);
  const auto start = desktop.now();
  auto late = heardAfter([&] {
    list.unminimize();
    list.minimize();
    notes.quit();
  });
  EXPECT_EQ(std::erase(late, "terminate ?"), 1) << "another sender, at its own time";
  EXPECT_EQ(late, (Lines{"Focus ?", "Windo ?", "gone ?"}));
  EXPECT_GT(desktop.now(), start);
  observers.clear();
  EXPECT_TRUE(heardAfter([&] { desktop.launch("Mail"); }).empty());
}

TEST_F(SimulatedEventsTest, AHitTestFindsWhatLiesOnTop) {
  const auto notes = desktop.launch("Notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto inbox = desktop.launch("Mail").openWindow("Inbox", {500, 0, 600, 300}, "");
  const auto button = minimizeButtonOf(list);
  EXPECT_EQ(at({133, 131}), "AXButton AXMinimizeButton in Shopping");
  EXPECT_EQ(at({200, 131}), "AXWindow AXStandardWindow in Notes");
  EXPECT_EQ(at({200, 148}), "AXGroup - in Shopping");
  EXPECT_EQ(at({600, 200}), "AXGroup - in Inbox");
  EXPECT_EQ(at({600, 10}), "AXWindow - in Mail") << "a window without a subrole";
  EXPECT_EQ(at({10, 10}), "nothing");
  EXPECT_EQ(std::get<QuartzPoint>(button.copyAttribute("AXPosition").value()),
            (QuartzPoint{126, 124}));
  EXPECT_EQ(std::get<Size>(button.copyAttribute("AXSize").value()), (Size{14, 14}));
  EXPECT_EQ(platform.accessibility().elementAtPosition(systemWide, {133, 131}).value(), button);
  EXPECT_NE(button, list.element());
  list.moveTo({0, 500});
  EXPECT_EQ(at({33, 511}), "AXButton AXMinimizeButton in Shopping");
  EXPECT_TRUE(button.performAction("AXPress"));
  EXPECT_TRUE(list.isMinimized());
  EXPECT_EQ(at({33, 511}), "nothing");
  list.unminimize();
  list.withoutMinimizeButton();
  EXPECT_EQ(at({33, 511}), "AXWindow AXStandardWindow in Notes");
  EXPECT_EQ(button.copyAttribute("AXRole").error(), AXError::invalidUIElement);
  platform.workspace().hide(notes.pid());
  EXPECT_EQ(at({33, 511}), "nothing");

  // The program's own panel covers what is below it, at its level.
  const auto panel = platform.panels().makePanel("pellow-strip");
  panel->setFrame({580, 680, 40, 40});
  panel->orderFront();
  const auto found = platform.accessibility().elementAtPosition(systemWide, {600, 200}).value();
  EXPECT_EQ(found.pid(), platform.process().pid());
  EXPECT_EQ(std::get<QuartzPoint>(found.copyAttribute("AXPosition").value()),
            (QuartzPoint{580, 180}));
  panel->setLevel(PanelLevel::desktopIcons);
  EXPECT_EQ(at({600, 200}), "AXGroup - in Inbox");
  panel->orderOut();
  EXPECT_EQ(found.copyAttribute("AXRole").error(), AXError::invalidUIElement);

  // A slow application costs the timeout of the one who asks, and answers by what is there then.
  systemWide.setMessagingTimeout(0.1);
  inbox.answersAfter(1);
  const auto start = desktop.now();
  EXPECT_EQ(at({600, 200}), "an error");
  EXPECT_DOUBLE_EQ(desktop.now(), start + 0.1);
  systemWide.setMessagingTimeout(5);
  desktop.after(0.5, [&] { inbox.moveTo({0, 600}); });
  EXPECT_EQ(at({600, 200}), "nothing");
  desktop.after(0.5, [&] { inbox.close(); });
  EXPECT_EQ(platform.accessibility().elementAtPosition(systemWide, {10, 700}).error(),
            AXError::invalidUIElement);
  desktop.failNext("elementAtPosition", AXError::failure);
  EXPECT_EQ(at({10, 10}), "an error");
}

TEST_F(SimulatedEventsTest, ApplicationsHangWakeAndDie) {
  const auto notes = desktop.launch("Notes");
  const auto list = notes.openWindow("Shopping", home).actsLate();
  const auto element = list.element();
  element.setMessagingTimeout(2);
  notes.hangs();
  const auto start = desktop.now();
  EXPECT_EQ(element.setAttribute("AXMinimized", true).error(), AXError::cannotComplete);
  EXPECT_DOUBLE_EQ(desktop.now(), start + 2);
  // One who waits long enough is answered when it wakes, and late work is done then; a crash in
  // between changes nothing for the application.
  SimulatedPlatform afterCrash(desktop.snapshot());
  afterCrash.desktop().run(100);
  EXPECT_FALSE(afterCrash.desktop().counterpart(list).isMinimized());
  afterCrash.desktop().application("Notes").wakes();
  EXPECT_TRUE(afterCrash.desktop().counterpart(list).isMinimized());
  desktop.after(1, [&] { notes.wakes(); });
  EXPECT_TRUE(std::get<bool>(element.copyAttribute("AXMinimized").value()));
  EXPECT_DOUBLE_EQ(desktop.now(), start + 3);

  // Nobody waits for the dead.
  notes.hangs();
  const auto waiting = desktop.now();
  EXPECT_EQ(platform.accessibility()
                .observe(element, "AXUIElementDestroyed", [](const AXElement&) {})
                .error(),
            AXError::cannotComplete);
  EXPECT_DOUBLE_EQ(desktop.now(), waiting + 2);
  desktop.after(1, [&] { notes.kill(); });
  EXPECT_EQ(element.copyAttribute("AXTitle").error(), AXError::invalidUIElement);
  const auto mail = desktop.launch("Mail").quitsDuring(2);
  const auto inbox = mail.openWindow("Inbox", home);
  EXPECT_TRUE(inbox.element().copyAttribute("AXTitle"));
  EXPECT_EQ(mail.element().copyAttribute("AXWindows").error(), AXError::invalidUIElement);
  EXPECT_FALSE(mail.isRunning());
  EXPECT_EQ(heardAfter([] {}), Lines{}) << "told already";
  const auto chess = desktop.launch("Chess").diesDuring(1);
  const auto board = chess.openWindow("Board", home);
  EXPECT_EQ(board.element().copyAttribute("AXTitle").error(), AXError::invalidUIElement);
  EXPECT_FALSE(chess.isRunning());

  const auto web =
      desktop.launch("Web").openWindow("Page", home).failsNext("pid", AXError::failure);
  EXPECT_EQ(web.element().pid().error(), AXError::failure);
  EXPECT_TRUE(web.element().pid());
  // The permission goes while the answer is on its way.
  web.answersAfter(1);
  desktop.after(0.5, [&] { desktop.setTrusted(false); });
  EXPECT_EQ(web.element().copyAttribute("AXTitle").error(), AXError::apiDisabled);
}

TEST_F(SimulatedEventsTest, TheSeedChoosesTheFaults) {
  const auto errors = [](std::uint64_t seed) {
    SimulatedPlatform seeded({.seed = seed});
    auto& desk = seeded.desktop();
    const auto element = desk.launch("Notes").openWindow("Shopping", home).element();
    desk.injectFaults(0.3, {AXError::cannotComplete, AXError::failure});
    std::vector<AXError> answers;
    for (int i = 0; i < 1000; ++i) {
      const auto answer = element.copyAttribute("AXTitle");
      answers.push_back(answer ? AXError::success : answer.error());
    }
    desk.injectFaults(0);
    EXPECT_TRUE(element.copyAttribute("AXTitle"));
    return answers;
  };
  const auto answers = errors(7);
  EXPECT_EQ(answers, errors(7));
  EXPECT_NE(answers, errors(8));
  for (const auto error : {AXError::cannotComplete, AXError::failure})
    EXPECT_NEAR(static_cast<double>(std::ranges::count(answers, error)), 150, 50);
}

TEST_F(SimulatedEventsTest, TheDockTakesItsShareOfThePrimaryDisplay) {
  const auto room = [&](std::size_t screen = 0) {
    return platform.screens().all().at(screen).visibleFrame;
  };
  desktop.moveDock(DockSide::left);
  EXPECT_EQ(room(), AppKitRect(70, 0, 1370, 875));
  desktop.moveDock(DockSide::autoHidden);
  EXPECT_EQ(room(), AppKitRect(0, 0, 1440, 875));
  desktop.moveDock(DockSide::right);
  EXPECT_EQ(room(), AppKitRect(0, 0, 1370, 875));
  desktop.plug(2, {1440, 0, 1000, 800});
  EXPECT_EQ(room(1), AppKitRect(1440, 0, 1000, 775));
  desktop.unplug(1);
  EXPECT_EQ(room(), AppKitRect(0, 0, 930, 775)) << "the Dock comes along";
}

}  // namespace
}  // namespace pellow::simulated
