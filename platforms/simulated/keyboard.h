#pragma once

#include <cstdint>
#include <string>

namespace pellow::simulated {

class EventMonitors;
class System;

// The keyboard under the user's hands. A key press is an event that reaches the program in its main
// loop; it goes to the program if that is active or one of its windows has the keyboard. While the
// screens are locked, nobody hears of it.
class Keyboard {
 public:
  Keyboard(System& system, EventMonitors& monitors) : system_(system), monitors_(monitors) {}

  void press(std::uint16_t keyCode, std::uint64_t modifierFlags = 0, std::string characters = "");
  // A window of the program, such as a panel, has it while another application is active.
  void setBelongsToProgram(bool belongs) { belongsToProgram_ = belongs; }

 private:
  System& system_;
  EventMonitors& monitors_;
  bool belongsToProgram_ = false;
};

}  // namespace pellow::simulated
