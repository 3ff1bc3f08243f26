#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/unit/program.h"

// An application that answers nothing holds up nobody but itself.

namespace pellow {
namespace {

using Tabs = std::vector<std::string>;

TEST(HangStory, TheInterfaceStaysLiveAndTheOrderIsKept) {
  simulated::Desktop desktop;
  const auto stuck = desktop.launch("Stuck", "com.example.stuck");
  const auto report = stuck.openWindow("Report", {100, 120, 800, 600});
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto list = notes.openWindow("Shopping", {300, 200, 400, 300});
  Program program(desktop);
  program.pressEverything();
  ASSERT_EQ(program.tabs(), (Tabs{"Report", "Shopping"}));
  const auto fresh = notes.openWindow("Letter", {50, 60, 300, 300});
  desktop.run(3);
  stuck.hangs();

  // The tab is gone in the next frame, whatever its window does.
  const auto clickTab = [&](const std::string& title) {
    desktop.pointer().click(program.tab(title));
    desktop.run(0.02);
    for (const auto& shown : program.tabs()) EXPECT_NE(shown, title);
  };
  clickTab("Report");
  clickTab("Shopping");
  // Switching applications and pressing a key take no time.
  notes.activate();
  desktop.keyboard().press(3, Program::modifiers);
  desktop.run(0.001);
  EXPECT_EQ(desktop.panels().panel("pellow-strip").level(), PanelLevel::desktopIcons);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.run(1);
  EXPECT_EQ(fresh.frame(), QuartzRect(50, 60, 300, 300)) << "in its turn";

  desktop.runUntilQuiet();
  EXPECT_EQ(list.frame(), QuartzRect(300, 200, 400, 300));
  EXPECT_LE(fresh.shareOnDisplays(), 0.05);
  EXPECT_EQ(program.answerAlert(),
            "Pellow could not complete that action\n"
            "Could not move the window (the app did not respond in time).");
  EXPECT_EQ(program.tabs(), (Tabs{"Report", "Letter"}));

  // Bulk actions pass it by; when it wakes, its window comes back like any other.
  program.pressEverything();
  EXPECT_EQ(program.tabs().size(), 3);
  stuck.wakes();
  program.pressRestoreAll();
  EXPECT_EQ(report.frame(), QuartzRect(100, 120, 800, 600));
  EXPECT_TRUE(program.tabs().empty());
  EXPECT_TRUE(desktop.alerts().showing().empty());
}

// The search for dead windows must ask it about every one of its tabs.
TEST(HangStory, ManyTabsOfItCostNoMoreThanOne) {
  simulated::Desktop desktop;
  const auto stuck = desktop.launch("Stuck", "com.example.stuck");
  for (int index = 0; index < 40; ++index) stuck.openWindow("Report", {100, 120, 800, 600});
  const auto notes = desktop.launch("Notes", "com.example.notes");
  notes.openWindow("Letter", {50, 60, 300, 300});
  const auto list = notes.openWindow("Shopping", {300, 200, 400, 300});
  Program program(desktop);
  program.pressEverything();
  stuck.hangs();
  for (const auto* const title : {"Letter", "Shopping"}) {
    const auto& tabs = program.controller().store().tabs();
    program.controller().restore({std::ranges::find(tabs, title, &TabItem::title)->id});
    desktop.run(1);
  }
  EXPECT_EQ(list.frame(), QuartzRect(300, 200, 400, 300));
}

TEST(HangStory, WhatHangsInTheMiddleFinishesWhenItWakes) {
  int finished = 0;
  for (int call = 1; call <= 8; ++call) {
    SCOPED_TRACE(call);
    simulated::Desktop desktop;
    const auto stuck = desktop.launch("Stuck", "com.example.stuck");
    const auto report = stuck.openWindow("Report", {100, 120, 800, 600});
    Program program(desktop);
    int calls = 0;
    desktop.onPortCall([&](std::uint64_t) {
      if (++calls == call) stuck.hangs();
    });
    desktop.after(4, [&] { stuck.wakes(); });
    program.pressPellow();
    desktop.onPortCall(nullptr);
    // It finishes, unless a read with a quarter-second timeout found the application hanging: then
    // an alert says so, and the window stays where it was.
    if (program.answerAlert().empty()) {
      EXPECT_EQ(program.tabs(), Tabs{"Report"});
      EXPECT_LE(report.shareOnDisplays(), 0.05);
      ++finished;
    } else {
      EXPECT_TRUE(program.tabs().empty());
      EXPECT_EQ(report.frame(), QuartzRect(100, 120, 800, 600));
    }
    program.pressRestoreAll();
    EXPECT_EQ(report.frame(), QuartzRect(100, 120, 800, 600));
    EXPECT_TRUE(program.journalAfterCrash().empty());
  }
  EXPECT_GE(finished, 6);
}

}  // namespace
}  // namespace pellow
