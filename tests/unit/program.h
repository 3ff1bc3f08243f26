#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "platforms/simulated/desktop.h"

namespace pellow {

// The program, launched on a simulated desktop, and what its user knows of it.
class Program {
 public:
  explicit Program(simulated::Desktop& desktop) : desktop_(desktop), delegate_(desktop) {
    desktop.process().onTerminate([this] { delegate_.applicationWillTerminate(); });
    delegate_.applicationDidFinishLaunching();
    desktop.runUntilQuiet();
  }

  PellowController& controller() { return delegate_.controller(); }
  void quit() { desktop_.process().terminate(); }
  void sessionIsSaved() { delegate_.sessionWillBeSaved(); }
  // As menu items would.
  void perform(ShortcutAction action) { delegate_.perform(action); }
  void showSettings() { delegate_.showSettings(); }

  static constexpr auto modifiers = modifier::control | modifier::option | modifier::command;

  // Control-Option-Command and a letter key.
  void pressPellow() { press(17); }
  void pressRestoreAll() { press(15); }
  void pressPinned() { press(35); }
  void pressEverything() { press(0); }
  void pressFocusMode() { press(14); }
  void press(std::uint16_t keyCode) {
    desktop_.keyboard().press(keyCode, modifiers);
    desktop_.runUntilQuiet();
  }

  // The titles of the tabs on the strip, from its first panel.
  std::vector<std::string> tabs() const {
    std::vector<std::string> names;
    const auto* const block = desktop_.panels().visible("pellow-strip").at(0)->view("tabs");
    for (const auto& tab : block->children) names.push_back(tab->look.accessibleName);
    return names;
  }

  // The middle of a tab on the screen.
  AppKitPoint tab(const std::string& title) const {
    for (const auto* const panel : desktop_.panels().visible("pellow-strip"))
      if (const auto* const view = panel->viewNamed(title))
        return panel->centre("tabs/" + view->key);
    throw std::out_of_range("no tab " + title);
  }
  void clickTab(const std::string& title) {
    desktop_.pointer().click(tab(title));
    desktop_.runUntilQuiet();
  }

  // Answers the alert that shows and returns its text; empty without one.
  std::string answerAlert(const std::string& button = "OK") {
    const auto showing = desktop_.alerts().showing();
    if (showing.empty()) return "";
    const auto& alert = showing.front();
    desktop_.alerts().choose(button);
    desktop_.runUntilQuiet();
    return alert.messageText + "\n" + alert.informativeText;
  }

  // The journal as a crash at this moment would leave it.
  std::vector<ParkingRecord> journalAfterCrash() const {
    simulated::Desktop afterCrash(desktop_.snapshot());
    return ParkingJournal(afterCrash.userDefaults(), afterCrash.log()).records();
  }

 private:
  simulated::Desktop& desktop_;
  AppDelegate delegate_;
};

// A desktop on which applications open their windows before the program is launched.
class Story : public testing::Test {
 protected:
  void launch() { program = std::make_unique<Program>(desktop); }

  simulated::Desktop desktop;
  std::unique_ptr<Program> program;
};

}  // namespace pellow
