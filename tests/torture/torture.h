#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/harness/desktop_session.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

namespace pellow::desktop {

// Kills the program again and again in the middle of putting windows away and bringing them back,
// starts it anew, and looks from outside whether every window can be seen.
//
// Windows go off the screen (the mechanism `offscreen`), since only these are in the journal: what
// is minimized or hidden stays within reach of the desktop's own means.
class Torture {
 public:
  struct Tally {
    int kills = 0;
    int withWindowsAway = 0;  // at the moment of the kill some window was not in its place
    int halfDone = 0;   // some windows were away and some were not yet, of many that should be
    int lost = 0;       // windows that could not be seen after the next launch
    int misplaced = 0;  // windows that could be seen, but neither in their place nor a twin's
  };

  // Starts the desktop, the applications and the program. Same seed, same sequence of actions.
  // Describes losses in `report`.
  Torture(unsigned seed, std::ostream& report);

  // One kill, the launch after it, and a look at the windows. Throws std::runtime_error when the
  // program does not start or the desktop does not do as it is told.
  void kill();

  const Tally& tally() const { return tally_; }

 private:
  struct Kind {
    std::size_t client;
    std::string title;
    PixelRect place;
  };
  struct Guest {
    Kind kind;
    WindowID window = 0;
    PixelRect home;
  };
  // What is going on at the kill, which comes at most `milliseconds` after it began.
  struct Scene {
    const char* name;
    int milliseconds;
    int windows;  // how many it puts away or brings back
    std::function<void()> begin;
  };

  void openWindows();
  // Opens the window anew, in its place.
  void open(std::size_t index);
  void launch();
  void press(KeySym letter);
  void minimize(const Guest& guest);
  void putEverythingAway();
  void pause(int milliseconds);
  int random(int end) { return std::uniform_int_distribution(0, end - 1)(random_); }

  std::vector<Scene> scenes();

  bool isHome(const Guest& guest) const;
  bool isLost(const Guest& guest) const;
  int countAway() const;
  // `scars` is what to tell of the kill should something be amiss.
  void look(const Scene& scene, const std::string& scars);

  std::mt19937 random_;
  std::ostream& report_;
  Tally tally_;
  DesktopSession desktop_;
  std::vector<std::unique_ptr<TestClient>> clients_;
  std::vector<Guest> guests_;
  std::unique_ptr<PellowProgram> pellow_;
};

}  // namespace pellow::desktop
