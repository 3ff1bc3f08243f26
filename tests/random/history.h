#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellow::random {

// What can happen on a desktop while the program runs on it. A step's numbers choose among what is
// there at that moment, so that it means something in every history: "minimize 7" minimizes the
// window with this number, counted round and round.
enum class Verb {
  // Applications and their windows
  launch,           // one of the usual applications
  open,             // a window of it: application, title and kind, place
  manners,          // how a window behaves from now on: window, manner, detail
  temper,           // how an application behaves from now on: application, temper, detail
  rename,           // a window by its application: window, title
  resize,           // likewise: window, size
  hang,             // an application answers nothing more; whether it does so later
  wake,             // until it does again
  quitApplication,  // its windows go, then it goes
  killApplication,  // it goes without a word

  // The user
  press,       // a shortcut of the program
  tab,         // clicks a tab
  rest,        // the pointer goes to a tab and stays
  menu,        // opens the menu of a tab or of its strip: which, whose
  item,        // chooses from the open menu: item, and item of its submenu
  drag,        // a strip, to a place: which, where
  minimize,    // a window
  unminimize,  // a window
  close,       // a window
  move,        // a window, to a place
  raise,       // a window
  choose,      // a window from its application's menu
  activate,    // an application
  hide,        // an application
  unhide,      // an application
  answer,      // the oldest alert, with one of its buttons
  prefer,      // a setting of the program: setting, value
  zones,       // other zones, known from the next start on: how many, edge
  pin,         // an application to a zone, known from the next start on

  // Displays and the system
  plug,       // a display beside the others
  unplug,     // a display
  dock,       // goes to another side
  faults,     // calls fail by chance: percent, error
  delays,     // answers, announcements and pictures are late: each up to this many milliseconds
  failWrite,  // the next write that must be kept at once is not
  trust,      // the permission is given or withdrawn
  capture,    // the other permission is given or withdrawn

  // Time and the program's life
  run,      // for this many milliseconds
  quiet,    // until nothing is under way
  settle,   // until nothing is under way and every alert is answered
  start,    // the program, if it does not run
  quit,     // the program
  signal,   // the program gets SIGTERM, SIGINT or SIGHUP
  crash,    // the program, now
  crashIn,  // the program, at the nth call from now that could wait
};

// One thing that happens, with all the numbers that it needs.
struct Step {
  Verb verb = Verb::run;
  std::array<int, 3> numbers{};
  // How many milliseconds later it happens, whatever the program does then: even while its main
  // thread is blocked. 0: now, between two turns of its main loop.
  int later = 0;

  bool operator==(const Step&) const = default;
};

// Everything that a run depends on: the same history is the same run, call by call.
struct History {
  std::uint64_t seed = 1;  // of the desktop's own choices: who is first, how late is late
  std::vector<Step> steps;

  bool operator==(const History&) const = default;
};

// One line, to be read by people and by `parse`:
//
//   seed 17; launch 3; open 3 1; start; press 0; hang 2 @150
//
// Numbers that are 0 at the end of a step are left out; "@150" is 150 ms later.
std::string text(const Step& step);
std::string text(const History& history);

// Steps are separated by ";" or a line's end, and "#" begins a remark. Nothing for any other text.
std::optional<History> parse(std::string_view text);

// A desktop with some applications, the program started on it, many steps, and an end. With an even
// seed nothing fails but what fails by nature in an application or the system.
History generate(std::uint64_t seed);

// Whether the verb can be ordered for later.
bool canBeLater(Verb verb);

}  // namespace pellow::random
