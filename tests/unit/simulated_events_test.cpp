#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platforms/simulated/desktop.h"

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
    auto& workspace = desktop.workspace();
    const auto note = [this](const char* what) {
      return
          [this, what](ProcessID pid) { heard.push_back(fmt::format("{} {}", what, name(pid))); };
    };
    observers.push_back(workspace.onDidBecomeRegular(note("regular")));
    observers.push_back(workspace.onDidActivateApplication(note("activate")));
    observers.push_back(workspace.onDidTerminateApplication(note("terminate")));
  }

  std::string name(ProcessID pid) {
    const auto running = desktop.workspace().application(pid);
    return running ? running->localizedName : "?";
  }

  // Hears everything that the application and its windows have to say.
  void listenTo(const simulated::Application& application) {
    for (const auto* what : {miniaturized, focusChanged})
      listen(application.element(), what, std::string(what).substr(2, 5));
    for (const auto& window : application.windows())
      listen(window.element(), "AXUIElementDestroyed", "gone");
  }

  void listen(const AXElement& element, const char* notification, std::string word) {
    auto observer = desktop.accessibility().observe(
        element, notification,
        [this, word = std::move(word)](const AXElement& about) {
          const auto title = about.copyAttribute("AXTitle", patience);
          heard.push_back(word + " " + (title ? std::get<std::string>(*title) : "?"));
        },
        patience);
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

  AXElement minimizeButtonOf(const simulated::Window& window) {
    return std::get<AXElement>(
        window.element().copyAttribute("AXMinimizeButton", patience).value());
  }

  std::string at(QuartzPoint point) {
    const auto found = desktop.accessibility().elementAtPosition(systemWide, point, patience);
    if (!found) return found.error() == AXError::noValue ? "nothing" : "an error";
    const auto read = [&](const AXElement& element, const char* attribute) {
      const auto value = element.copyAttribute(attribute, patience);
      return value ? std::get<std::string>(*value) : "-";
    };
    const auto parent = found->copyAttribute("AXParent", patience);
    return fmt::format("{} {} in {}", read(*found, "AXRole"), read(*found, "AXSubrole"),
                       read(std::get<AXElement>(*parent), "AXTitle"));
  }

  simulated::Desktop desktop;
  AXElement systemWide = desktop.accessibility().systemWide();
  Seconds patience = 6;
  Lines heard;
  std::vector<Subscription> observers;
};

TEST_F(SimulatedEventsTest, EveryActIsToldInItsOrder) {
  EXPECT_EQ(heardAfter([&] { desktop.launch("Notes"); }),
            (Lines{"regular Notes", "activate Notes"}));
  const auto notes = desktop.application("Notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto letter = notes.openWindow("Letter", {900, 120, 300, 600});
  const auto mail = desktop.launch("Mail");
  mail.openWindow("Inbox", {0, 30, 90, 90});
  listenTo(notes);
  listenTo(mail);
  struct Act {
    std::function<void()> act;
    Lines told;
  };
  auto& workspace = desktop.workspace();
  Subscription alert;
  for (const auto& [act, told] : std::vector<Act>{
           // A background agent does not take the focus.
           {[&] { desktop.launch("agent", {}, ActivationPolicy::prohibited); }, {}},
           {[&] { desktop.application("agent").becomes(ActivationPolicy::regular); },
            {"regular agent"}},
           {[&] { desktop.application("agent").quit(); }, {"terminate ?"}},
           // A click on a window of another application: its focused one, then another one.
           {[&] { desktop.pointer().click({1000, 400}); }, {"activate Notes"}},
           {[&] { mail.activate(); }, {"activate Mail"}},
           {[&] { desktop.pointer().click({200, 400}); }, {"activate Notes", "Focus Shopping"}},
           {[&] { desktop.pointer().click({200, 400}); }, {}},
           // The focus moves on within the application, wherever the minimize came from.
           {[&] { desktop.pointer().click(list.minimizeButton()); },
            {"Windo Shopping", "Focus Letter"}},
           {[&] { list.unminimize(); }, {"Focus Shopping"}},
           {[&] { letter.element().performAction("AXRaise", patience).value(); }, {"Focus Letter"}},
           {[&] { list.element().setAttribute("AXMinimized", true, patience).value(); },
            {"Windo Shopping"}},
           {[&] { letter.minimize(); }, {"Windo Letter"}},
           {[&] { letter.minimize(); }, {}},
           // The next frontmost application already had its focused window.
           {[&] { workspace.hide(notes.pid()); }, {"activate Mail"}},
           {[&] { notes.unhide(); }, {}},
           {[&] { workspace.activate(notes.pid()); }, {"activate Notes"}},
           // A closed alert gives the focus back, even to an application without windows.
           {[&] { alert = desktop.alerts().show({.buttons = {"OK"}}, {}); }, {"activate Pellow"}},
           {[&] { alert.cancel(); }, {"activate Notes"}},
           {[&] { list.unminimize(); }, {"Focus Shopping"}},
           {[&] { alert = desktop.alerts().show({.buttons = {"OK"}}, {}); }, {"activate Pellow"}},
           // A killed application's windows do not announce their end.
           {[&] { mail.kill(); }, {"terminate ?"}},
           {[&] { letter.close(); }, {"gone ?"}},
           {[&] { desktop.launch("Web"); }, {"regular Web", "activate Web"}},
           {[&] { notes.activate(); }, {"activate Notes"}},
           {[&] { notes.quit(); }, {"gone ?", "activate Web", "terminate ?"}}})
    EXPECT_EQ(heardAfter(act), told);
}

TEST_F(SimulatedEventsTest, WithoutThePermissionNothingIsHeard) {
  const auto notes = desktop.launch("Notes");
  const auto list = notes.openWindow("Shopping", home);
  // Nothing is heard without the permission, nor by a cancelled observer; the rest comes late but
  // in order.
  listenTo(notes);
  desktop.accessibility().setTrusted(false);
  EXPECT_TRUE(heardAfter([&] { list.minimize(); }).empty());
  desktop.accessibility().setTrusted(true);
  desktop.delayAnnouncements(2);
  auto late = heardAfter([&] {
    list.unminimize();
    list.minimize();
    notes.quit();
  });
  EXPECT_EQ(std::erase(late, "terminate ?"), 1) << "another sender, at its own time";
  EXPECT_EQ(late, (Lines{"Focus ?", "Windo ?", "gone ?"}));
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
  list.withoutMinimizeButton();
  EXPECT_EQ(at({133, 131}), "AXWindow AXStandardWindow in Notes");
  EXPECT_EQ(button.copyAttribute("AXRole", patience).error(), AXError::invalidUIElement);

  // The program's own panel covers what is below it, at its level.
  const auto panel = desktop.panels().makePanel("pellow-strip", WindowShadow::yes);
  panel->setFrame({580, 680, 40, 40});
  panel->orderFront();
  const auto found =
      desktop.accessibility().elementAtPosition(systemWide, {600, 200}, patience).value();
  EXPECT_EQ(found.pid(), desktop.process().pid());
  panel->setLevel(PanelLevel::desktopIcons);
  EXPECT_EQ(at({600, 200}), "AXGroup - in Inbox");

  // A slow application answers with what is there by then, if the caller waits that long.
  patience = 0.1;
  inbox.answersAfter(1);
  EXPECT_EQ(at({600, 200}), "an error");
  patience = 5;
  desktop.after(0.5, [&] { inbox.moveTo({0, 600}); });
  EXPECT_EQ(at({600, 200}), "nothing");
}

TEST_F(SimulatedEventsTest, ApplicationsHangWakeAndDie) {
  const auto notes = desktop.launch("Notes");
  const auto element = notes.openWindow("Shopping", home).actsLate().element();
  patience = 2;
  notes.hangs();
  const auto start = desktop.now();
  EXPECT_EQ(element.setAttribute("AXMinimized", true, patience).error(), AXError::cannotComplete);
  EXPECT_DOUBLE_EQ(desktop.now(), start + 2);
  // A patient caller is answered when it wakes, and late work is done then.
  desktop.after(1, [&] { notes.wakes(); });
  EXPECT_TRUE(std::get<bool>(element.copyAttribute("AXMinimized", patience).value()));
  EXPECT_DOUBLE_EQ(desktop.now(), start + 3);
  // Nobody waits for the dead.
  notes.hangs();
  desktop.after(1, [&] { notes.kill(); });
  EXPECT_EQ(element.copyAttribute("AXTitle", patience).error(), AXError::invalidUIElement);

  // The permission goes while the answer is on its way.
  const auto web = desktop.launch("Web").openWindow("Page", home).answersAfter(1);
  desktop.after(0.5, [&] { desktop.accessibility().setTrusted(false); });
  EXPECT_EQ(web.element().copyAttribute("AXTitle", patience).error(), AXError::apiDisabled);
}

}  // namespace
}  // namespace pellow::simulated
