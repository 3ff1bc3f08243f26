#pragma once

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

  static constexpr auto modifiers = modifier::control | modifier::option | modifier::command;

  // Control-Option-Command and the key of a letter.
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
    for (const auto& tab : block->children) names.push_back(tab.look.accessibleName);
    return names;
  }

  // Clicks a tab in the middle, where it stands on the screen.
  void clickTab(const std::string& title) {
    const auto& panel = desktop_.panels().panel("pellow-strip");
    const auto* const block = panel.view("tabs");
    const auto* const tab = panel.viewNamed(title);
    const AppKitVector inPanel{block->frame.minX() + tab->frame.midX(),
                               block->frame.minY() + tab->frame.midY()};
    desktop_.pointer().click(panel.frame().origin + inPanel);
    desktop_.runUntilQuiet();
  }

  // The text of the only alert, which is then answered; empty without one.
  std::string answerAlert(const std::string& button = "OK") {
    const auto showing = desktop_.alerts().showing();
    if (showing.empty()) return "";
    const auto& alert = showing.front();
    desktop_.alerts().choose(button);
    desktop_.runUntilQuiet();
    return alert.messageText + "\n" + alert.informativeText;
  }

  // The journal as a crash at this moment would leave it.
  std::vector<ParkingRecord> journalOnDisk() const {
    simulated::Desktop afterCrash(desktop_.snapshot());
    return ParkingJournal(afterCrash.userDefaults(), afterCrash.log()).records();
  }

 private:
  simulated::Desktop& desktop_;
  AppDelegate delegate_;
};

}  // namespace pellow
