#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/unit/program.h"

// How the program ends, cleanly or not, and what the next launch finds.

namespace pellow {
namespace {

using simulated::DesktopState;

// Two windows of one application and one of another.
struct Windows {
  explicit Windows(simulated::Desktop& desktop)
      : notes(desktop.launch("Notes", "com.example.notes")),
        mail(desktop.launch("Mail", "com.example.mail")),
        list(notes.openWindow("Shopping", {100, 120, 800, 600})),
        letter(notes.openWindow("Letter", {300, 200, 400, 300})),
        inbox(mail.openWindow("Inbox", {0, 30, 500, 500})) {}

  void pellowAll(Program& program) const {
    program.pressPellow();
    notes.activate();
    letter.raise();
    program.pressPellow();
    list.raise();
    program.pressPellow();
  }

  void expectHome(simulated::Desktop& desktop, const std::string& when) const {
    for (const auto& [window, home] : {std::pair{list, QuartzRect{100, 120, 800, 600}},
                                       {letter, {300, 200, 400, 300}},
                                       {inbox, {0, 30, 500, 500}}}) {
      const auto now = desktop.counterpart(window);
      EXPECT_EQ(now.frame(), home) << now.title() << ", " << when;
      EXPECT_FALSE(now.isMinimized()) << now.title() << ", " << when;
    }
  }

  simulated::Application notes;
  simulated::Application mail;
  simulated::Window list;
  simulated::Window letter;
  simulated::Window inbox;
};

TEST(EndStory, EveryRoadOutBringsEveryWindowBack) {
  using Road = std::function<void(simulated::Desktop&, Program&)>;
  const auto bySignal = [](TerminationSignal signal) {
    return [signal](simulated::Desktop& desktop, Program&) { desktop.process().receive(signal); };
  };
  const std::vector<Road> roads{bySignal(TerminationSignal::terminate),
                                bySignal(TerminationSignal::interrupt),
                                bySignal(TerminationSignal::hangUp),
                                [](simulated::Desktop&, Program& program) { program.quit(); }};
  for (const auto* mechanism : {"minimize", "offscreen", "hideApp"}) {
    for (const auto& road : roads) {
      simulated::Desktop desktop;
      desktop.userDefaults().put("mechanism", mechanism);
      const Windows windows(desktop);
      Program program(desktop);
      windows.pellowAll(program);
      road(desktop, program);
      desktop.runUntilQuiet();
      EXPECT_FALSE(desktop.process().isRunning());
      EXPECT_EQ(desktop.process().exitStatus(), 0);
      windows.expectHome(desktop, mechanism);
      EXPECT_FALSE(windows.notes.isHidden());
      EXPECT_FALSE(windows.mail.isHidden());
      EXPECT_TRUE(program.journalAfterCrash().empty());
    }
  }
}

// In the middle of whatever it does.
TEST(EndStory, ASessionThatGoesOnFindsTheProgramAtWork) {
  for (const auto* mechanism : {"minimize", "offscreen", "hideApp"}) {
    for (Seconds moment = 0; moment < 0.5; moment += 0.01) {
      simulated::Desktop desktop;
      desktop.userDefaults().put("mechanism", mechanism);
      const Windows windows(desktop);
      windows.notes.answersAfter(0.02);
      Program program(desktop);
      windows.pellowAll(program);
      program.perform(ShortcutAction::restoreAll);
      program.perform(ShortcutAction::pellowFrontmost);
      desktop.run(moment);
      program.sessionIsSaved();
      windows.expectHome(desktop, fmt::format("{} after {} s", mechanism, moment));
      desktop.runUntilQuiet();
      windows.expectHome(desktop, fmt::format("{} after {} s, later", mechanism, moment));
      EXPECT_TRUE(program.tabs().empty());
      EXPECT_TRUE(program.journalAfterCrash().empty());

      desktop.run(3);  // longer than what the program does itself echoes
      windows.list.minimize();
      desktop.runUntilQuiet();
      EXPECT_EQ(program.tabs(), std::vector<std::string>{"Shopping"});
      program.pressRestoreAll();
      EXPECT_TRUE(program.tabs().empty()) << "a press from before, at " << moment << " s";
      program.pressEverything();
      EXPECT_EQ(program.tabs().size(), mechanism == std::string("hideApp") ? 2 : 3);
      program.quit();
      desktop.runUntilQuiet();
      windows.expectHome(desktop, "at the end");
    }
  }
}

// It keeps the tab, and the record.
TEST(EndStory, ASessionThatGoesOnLosesNoWindowThatDoesNotAnswer) {
  simulated::Desktop desktop;
  const Windows windows(desktop);
  Program program(desktop);
  windows.pellowAll(program);
  windows.mail.hangs();
  windows.letter.failsNext("AXPosition", AXError::failure, simulated::AXCall::write);
  program.sessionIsSaved();
  EXPECT_EQ(windows.list.frame().minX(), 100);
  desktop.runUntilQuiet();
  EXPECT_EQ(program.tabs(), (std::vector<std::string>{"Inbox", "Letter"}));
  EXPECT_EQ(program.journalAfterCrash().size(), 2);
  windows.mail.wakes();
  program.pressRestoreAll();
  windows.expectHome(desktop, "once it answers");
  EXPECT_TRUE(program.journalAfterCrash().empty());
}

// Its observers were still to be added, behind a call that takes long.
TEST(EndStory, ASessionThatGoesOnLeavesNoApplicationUnwatched) {
  simulated::Desktop desktop;
  desktop.launch("Slow").answersAfter(0.2).openWindow("Report", {300, 200, 400, 300});
  Program program(desktop);
  program.perform(ShortcutAction::pellowFrontmost);
  desktop.run(0.05);
  const auto draft = desktop.launch("Late").openWindow("Draft", {100, 120, 800, 600});
  desktop.run(0.05);
  program.sessionIsSaved();
  desktop.runUntilQuiet();
  draft.minimize();
  desktop.runUntilQuiet();
  EXPECT_EQ(program.tabs(), std::vector<std::string>{"Draft"});
}

// Copies the desktop at every call on the way out and back, and launches a new program on each
// copy.
TEST(EndStory, ACrashAtAnyCallIsRepairedByTheNextLaunch) {
  std::vector<DesktopState> crashes;
  simulated::Desktop desktop;
  const Windows windows(desktop);
  Program program(desktop);
  desktop.onPortCall([&](std::uint64_t) { crashes.push_back(desktop.snapshot()); });
  windows.pellowAll(program);
  program.pressRestoreAll();
  desktop.onPortCall(nullptr);
  ASSERT_GT(crashes.size(), 50);

  int recoveries = 0;
  for (std::size_t call = 0; call < crashes.size(); ++call) {
    simulated::Desktop next(crashes[call]);
    Program relaunched(next);
    windows.expectHome(next, fmt::format("crash at call {}", call));
    EXPECT_TRUE(relaunched.journalAfterCrash().empty());
    recoveries += next.hasLogged("Recovered 3 window(s) stranded by a previous run");
  }
  EXPECT_GT(recoveries, 0);
}

TEST(EndStory, AWindowOfADisplayThatIsGoneIsBroughtToAnotherByTheNextLaunch) {
  simulated::Desktop desktop;
  desktop.screens().plug(2, {-1920, 0, 1920, 1080});
  const auto far = desktop.launch("Notes", "n").openWindow("Far", {-1800, 100, 800, 600});
  Program program(desktop);
  program.pressPellow();
  simulated::Desktop next(desktop.snapshot());
  next.screens().unplug(2);
  Program relaunched(next);
  EXPECT_EQ(next.counterpart(far).frame(), QuartzRect(0, 100, 800, 600));
  EXPECT_TRUE(relaunched.journalAfterCrash().empty());
}

TEST(EndStory, SiblingsWithOneTitleAreToldApart) {
  simulated::Desktop desktop;
  const auto shell = desktop.launch("Shell", "com.example.shell");
  const auto first = shell.openWindow("~", {10, 50, 600, 400});
  const auto second = shell.openWindow("~", {700, 300, 600, 400});
  Program program(desktop);
  program.pressPellow();
  first.raise();
  program.pressPellow();
  ASSERT_EQ(program.journalAfterCrash().size(), 2);

  // The second window's tab comes first on the strip.
  program.clickTab("~");
  EXPECT_EQ(second.frame(), QuartzRect(700, 300, 600, 400));
  ASSERT_EQ(program.journalAfterCrash().size(), 1);
  EXPECT_EQ(program.journalAfterCrash()[0].originalOrigin, (QuartzPoint{10, 50}));

  simulated::Desktop next(desktop.snapshot());
  Program relaunched(next);
  EXPECT_EQ(next.counterpart(first).frame(), QuartzRect(10, 50, 600, 400));
  EXPECT_EQ(next.counterpart(second).frame(), QuartzRect(700, 300, 600, 400));
}

// Even after a window of one of them has been renamed.
TEST(EndStory, ProcessesOfOneApplicationAreToldApart) {
  simulated::Desktop desktop;
  const auto one = desktop.launch("One", "com.example.shell");
  const auto first = one.openWindow("a", {10, 50, 600, 400});
  const auto two = desktop.launch("Two", "com.example.shell");
  const auto second = two.openWindow("b", {70, 30, 600, 400});
  Program program(desktop);
  program.pressPellow();
  one.activate();
  program.pressPellow();
  ASSERT_EQ(program.journalAfterCrash().size(), 2);
  first.rename("c");

  simulated::Desktop next(desktop.snapshot());
  Program relaunched(next);
  EXPECT_EQ(next.counterpart(first).frame(), QuartzRect(10, 50, 600, 400));
  EXPECT_EQ(next.counterpart(second).frame(), QuartzRect(70, 30, 600, 400));
}

TEST(EndStory, RecoveryPairsRecordsAndWindows) {
  const auto journal = [](const std::vector<ParkingRecord>& records) {
    simulated::Desktop scratch;
    EXPECT_TRUE(ParkingJournal(scratch.userDefaults(), scratch.log()).write(records));
    return *scratch.userDefaults().stored("parkedWindows");
  };
  simulated::Desktop desktop;
  const auto shell = desktop.launch("Shell", "com.example.shell");
  // Parked at the same place, as windows of one size are; the first has been renamed since.
  const auto renamed = shell.openWindow("vi", {1439, 872, 600, 400});
  const auto titled = shell.openWindow("logs", {1439 + 3, 872 - 3, 600, 400});
  const auto tooFar = shell.openWindow("mail", {1439 + 5, 872, 600, 400});
  const auto lost = desktop.launch("Web").openWindow("Page", {1439, 100, 700, 500});
  const auto nearlyGone = desktop.launch("Six").openWindow("6 %", {1440 - 60, 100, 1000, 500});
  const auto justGone = desktop.launch("Five").openWindow("5 %", {1440 - 50, 100, 1000, 500});
  const auto panel = desktop.launch("Agent", "com.example.agent", ActivationPolicy::accessory)
                         .openWindow("Panel", {-5000, 100, 300, 300});
  const auto asleep = desktop.launch("Asleep").openWindow("Minimized", {-5000, 100, 300, 300});
  asleep.minimize();
  desktop.userDefaults().put("parkedWindows",
                             journal({{"com.example.shell", "~", {10, 50}, {1439, 872}},
                                      {"com.example.shell", "logs", {20, 60}, {1439, 872}},
                                      {"com.example.gone", "x", {0, 0}, {1439, 872}}}));
  Program program(desktop);
  EXPECT_EQ(titled.frame().origin, (QuartzPoint{20, 60}));
  EXPECT_EQ(renamed.frame().origin, (QuartzPoint{10, 50}));
  // The unmatched record triggers the sweep, which covers every window that cannot be seen.
  EXPECT_TRUE(
      desktop.hasLogged("1 parked window(s) could not be matched; sweeping for hidden windows"));
  EXPECT_EQ(tooFar.frame().origin, (QuartzPoint{1440 - 600, 900 - 70 - 400}));
  EXPECT_EQ(lost.frame().origin, (QuartzPoint{1440 - 700, 100}));
  EXPECT_EQ(justGone.frame().origin, (QuartzPoint{1440 - 1000, 100}));
  EXPECT_EQ(nearlyGone.frame().origin, (QuartzPoint{1440 - 60, 100}));
  EXPECT_EQ(panel.frame().origin, (QuartzPoint{-5000, 100}));
  EXPECT_EQ(asleep.frame().origin, (QuartzPoint{-5000, 100}));
  EXPECT_TRUE(desktop.hasLogged("Recovered 5 window(s) stranded by a previous run"));
  EXPECT_TRUE(program.journalAfterCrash().empty());
}

// Without a display it was never moved; whatever is there now is another window.
TEST(EndStory, ARecordThatWasParkedNowhereTakesNoWindow) {
  simulated::Desktop desktop;
  const auto other = desktop.launch("Notes", "n").openWindow("Other", {12, 52, 300, 200});
  desktop.userDefaults().put(
      "parkedWindows", DefaultsData{R"([{"bundleID":"n","title":"Lost","originalOrigin":[10,50],)"
                                    R"("parkedOrigin":[10,50]}])"});
  const Program program(desktop);
  EXPECT_EQ(other.frame().origin, (QuartzPoint{12, 52}));
}

// Sixty percent of the window is enough.
TEST(EndStory, AWindowComesBackWhereEnoughOfItCanBeSeen) {
  simulated::Desktop desktop;
  Displays displays(desktop.screens());
  displays.recordMainHeight();
  const ParkingPlaces places(displays);
  EXPECT_EQ(places.restoreOrigin({1440 - 600, 100, 1000, 300}), (QuartzPoint{1440 - 600, 100}));
  EXPECT_EQ(places.restoreOrigin({1440 - 599, 100, 1000, 300}), (QuartzPoint{1440 - 1000, 100}));
}

TEST(EndStory, OfDisplaysAboveEachOtherTheOutermostOneCounts) {
  simulated::Desktop desktop;
  Displays displays(desktop.screens());
  displays.recordMainHeight();
  const ParkingPlaces places(displays);
  const QuartzRect window{100, 120, 800, 600};
  desktop.screens().plug(2, {0, 900, 1440, 600});
  EXPECT_EQ(places.parkOrigin(window, StripEdge::right), (QuartzPoint{1439, 872})) << "the first";
  desktop.screens().unplug(2);
  desktop.screens().plug(3, {300, 900, 1440, 600});
  EXPECT_EQ(places.parkOrigin(window, StripEdge::right), (QuartzPoint{1739, -28}));
  EXPECT_EQ(places.parkOrigin(window, StripEdge::left), (QuartzPoint{1 - 800, 872}));
}

TEST(EndStory, AnEmptyJournalAsksNobody) {
  for (const auto& stored : {"", "[]", "{}", "[1,2]", "no json"}) {
    simulated::Desktop desktop;
    if (*stored) desktop.userDefaults().put("parkedWindows", DefaultsData{stored});
    const auto lost = desktop.launch("Web", "w").openWindow("Page", {1439, 100, 700, 500});
    desktop.recordHistory();
    Program program(desktop);
    EXPECT_EQ(lost.frame().minX(), 1439) << stored;
    for (const auto& line : desktop.history())
      EXPECT_EQ(line.find("reads AX"), std::string::npos) << line;
  }
}

// A parked dialog comes back; a hung application's windows are left to the following launch; and no
// window leaves its record behind.
TEST(EndStory, NoRecordIsLostAndNoneStays) {
  simulated::Desktop desktop;
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto dialog = notes.openWindow("Find", {200, 150, 300, 200}, "AXDialog");
  const auto stuck = desktop.launch("Stuck", "com.example.stuck");
  const auto report = stuck.openWindow("Report", {100, 120, 800, 600});
  Program program(desktop);
  program.pressPellow();
  notes.activate();
  program.pressPellow();
  ASSERT_EQ(program.journalAfterCrash().size(), 2);

  simulated::Desktop second(desktop.snapshot());
  second.application("Stuck").hangs();
  Program afterCrash(second);
  EXPECT_EQ(second.counterpart(dialog).frame(), QuartzRect(200, 150, 300, 200));
  second.application("Notes").activate();
  afterCrash.pressPellow();
  afterCrash.pressRestoreAll();
  EXPECT_EQ(afterCrash.journalAfterCrash().size(), 1);
  second.application("Stuck").wakes();
  afterCrash.quit();
  second.runUntilQuiet();

  simulated::Desktop third(second.snapshot());
  Program afterEnd(third);
  EXPECT_EQ(third.counterpart(report).frame(), QuartzRect(100, 120, 800, 600));
  EXPECT_TRUE(afterEnd.journalAfterCrash().empty());

  // Two windows with the same title and place, restored by two quick clicks.
  const auto twin = notes.openWindow("Twin", {50, 60, 300, 300});
  notes.openWindow("Twin", {50, 60, 300, 300});
  program.pressRestoreAll();
  program.pressEverything();
  twin.answersAfter(0.2);
  for (int click = 0; click < 2; ++click) {
    desktop.pointer().click(program.tab("Twin"));
    desktop.run(0.01);
  }
  desktop.runUntilQuiet();
  for (const auto& record : program.journalAfterCrash()) EXPECT_NE(record.title, "Twin");

  // An application that hangs as the program ends.
  program.pressRestoreAll();
  stuck.activate();
  program.pressPellow();
  ASSERT_EQ(program.tabs(), std::vector<std::string>{"Report"});
  stuck.hangs();
  program.quit();
  desktop.runUntilQuiet();
  simulated::Desktop fourth(desktop.snapshot());
  fourth.application("Stuck").wakes();
  Program afterHang(fourth);
  EXPECT_EQ(fourth.counterpart(report).frame(), QuartzRect(100, 120, 800, 600));
}

TEST(EndStory, AWindowThatWillNotMoveDoesNotStopTheLaunch) {
  simulated::Desktop desktop;
  const Windows windows(desktop);
  Program program(desktop);
  windows.pellowAll(program);

  simulated::Desktop next(desktop.snapshot());
  next.counterpart(windows.letter).fails("AXPosition", AXError::failure, simulated::AXCall::write);
  Program relaunched(next);
  EXPECT_TRUE(
      next.hasLogged("Could not recover Letter: Could not move the window (AXError failure)."));
  EXPECT_TRUE(next.hasLogged("Recovered 2 window(s) stranded by a previous run"));
  EXPECT_EQ(next.counterpart(windows.list).frame().minX(), 100);
}

// All its windows together cost one timeout, and everyone else is back before that.
TEST(EndStory, ASilentApplicationHoldsUpTheEndOnce) {
  simulated::Desktop desktop;
  const auto stuck = desktop.launch("Stuck", "com.example.stuck");
  for (int index = 0; index < 5; ++index) stuck.openWindow("Report", {100, 120, 800, 600});
  const auto list = desktop.launch("Notes").openWindow("Shopping", {300, 200, 400, 300});
  Program program(desktop);
  program.pressEverything();
  stuck.hangs();
  // A read of the silent one is on its way, and one more call waits behind it.
  for (int click = 0; click < 2; ++click) {
    desktop.pointer().click(program.tab("Report"));
    desktop.run(1);
  }
  const auto start = desktop.now();
  desktop.after(0.5, [&] { EXPECT_EQ(list.frame(), QuartzRect(300, 200, 400, 300)); });
  program.quit();
  desktop.runUntilQuiet();
  EXPECT_LE(desktop.now() - start, 5.5);
  EXPECT_EQ(list.frame(), QuartzRect(300, 200, 400, 300));
  EXPECT_EQ(program.journalAfterCrash().size(), 5);
}

// Showing an application again asks the system, not the application.
TEST(EndStory, ASilentApplicationIsShownAgain) {
  simulated::Desktop desktop;
  const auto stuck = desktop.launch("Stuck", "com.example.stuck");
  stuck.openWindow("Report", {100, 120, 800, 600});
  stuck.openWindow("Log", {300, 200, 400, 300});
  desktop.userDefaults().put("mechanism", "minimize");
  Program program(desktop);
  program.pressPellow();
  desktop.userDefaults().put("mechanism", "hideApp");
  program.pressPellow();
  ASSERT_TRUE(stuck.isHidden());
  stuck.hangs();
  program.quit();
  desktop.runUntilQuiet();
  EXPECT_FALSE(stuck.isHidden());
}

// A launch waits a quarter of a second for it, and brings its windows back when it wakes.
TEST(EndStory, ASilentApplicationHoldsUpNoLaunch) {
  simulated::Desktop desktop;
  const Windows windows(desktop);
  const auto more = windows.notes.openWindow("Letter", {500, 60, 400, 300});
  Program program(desktop);
  program.pressEverything();
  ASSERT_EQ(program.journalAfterCrash().size(), 4);

  simulated::Desktop next(desktop.snapshot());
  next.application("Notes").hangs();
  const auto start = next.now();
  Seconds began = 0;
  next.onPortCall([&](std::uint64_t) {
    if (began == 0 && next.hasLogged("Recovered 1 window(s) stranded by a previous run"))
      began = next.now();
  });
  Program relaunched(next);
  next.onPortCall(nullptr);
  EXPECT_LE(began - start, 0.3);
  EXPECT_EQ(next.counterpart(windows.inbox).frame(), QuartzRect(0, 30, 500, 500));
  EXPECT_EQ(relaunched.journalAfterCrash().size(), 3);
  // One is slow again in the middle, and gets another chance.
  next.counterpart(windows.list)
      .failsNext("AXPosition", AXError::cannotComplete, simulated::AXCall::write);
  next.application("Notes").wakes();
  next.run(6);
  EXPECT_EQ(next.counterpart(windows.list).frame().minX(), 1439);
  EXPECT_EQ(next.counterpart(windows.letter).frame(), QuartzRect(300, 200, 400, 300));
  next.run(6);
  next.runUntilQuiet();
  windows.expectHome(next, "once it answers");
  EXPECT_EQ(next.counterpart(more).frame(), QuartzRect(500, 60, 400, 300));
  EXPECT_TRUE(relaunched.journalAfterCrash().empty());
}

// Applications list the windows of one Space only: a record's window may be on another.
TEST(EndStory, WindowsOnOtherSpacesComeBackWhenTheirSpaceIsShown) {
  simulated::Desktop desktop;
  const Windows windows(desktop);
  Program program(desktop);
  windows.pellowAll(program);
  windows.inbox.close();

  simulated::Desktop next(desktop.snapshot());
  next.workspace().showSpace(2);
  next.application("Notes").openWindow("Elsewhere", {20, 40, 300, 200});
  Program relaunched(next);
  EXPECT_EQ(next.counterpart(windows.list).frame().minX(), 1439);
  EXPECT_EQ(relaunched.journalAfterCrash().size(), 2) << "nobody can find the closed one";
  next.workspace().showSpace(3);
  next.runUntilQuiet();
  EXPECT_EQ(relaunched.journalAfterCrash().size(), 2);

  next.workspace().showSpace(1);
  next.runUntilQuiet();
  EXPECT_EQ(next.counterpart(windows.list).frame(), QuartzRect(100, 120, 800, 600));
  EXPECT_EQ(next.counterpart(windows.letter).frame(), QuartzRect(300, 200, 400, 300));
  EXPECT_TRUE(relaunched.journalAfterCrash().empty());
}

}  // namespace
}  // namespace pellow
