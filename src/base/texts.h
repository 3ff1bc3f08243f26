#pragma once

#include <string_view>

namespace pellow {

// Has no empty default, so that none can be forgotten.
struct Text : std::string_view {
  consteval Text(const char* text) : std::string_view(text) {}  // NOLINT(*-explicit-*)
};

// The texts for people that name what only one kind of system has: its keys, its settings, its
// Dock. All other texts stand where they are used. In braces is what goes in there.
struct Texts {
  // Keys, as shortcuts show them.
  Text control;
  Text option;
  Text shift;
  Text command;
  Text betweenKeys;
  // Keys of menu items, which act only while the menu is open; empty where no key does.
  Text settingsKey;
  Text quitKey;

  // Permissions.
  Text openSystemSettings;
  Text accessibilityNeeded;
  Text screenRecordingNeeded;
  Text screenRecordingDenied;
  Text screenRecordingOff;
  Text screenRecordingLost;
  Text screenRecordingExplained;
  Text screenRecordingCaveat;  // in several lines, of the report on pictures without it

  // Actions that failed.
  Text hideRefused;
  Text minimizeInstead;

  // The ways to put windows away.
  Text minimizeTitle;
  Text offscreenTitle;
  Text hideAppTitle;
  Text minimizeNote;
  Text offscreenIsMinimize;  // where windows cannot leave the displays
  Text minimizeFlightNote;
  Text pellowOnMinimizeNote;
  Text restoreOnActivationNote;

  // Shortcuts.
  Text needsModifier;
  Text systemUsesShortcut;
  Text systemShortcut;  // one without a name, within a sentence
  Text clashesNote;

  // Sync and updates.
  Text syncTitle;
  Text syncNote;
  Text syncPlace;
  Text syncUnavailable;
  Text syncApplied;  // for the log
  Text updatesNote;

  // The first minute: how to put a window away {0}, get all back {1} and have only one left {2}.
  // Empty where the system's own questions come first.
  Text firstMinute;
};

extern const Texts macTexts;
extern const Texts x11Texts;

}  // namespace pellow
