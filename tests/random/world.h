#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "platforms/simulated/desktop.h"
#include "tests/random/history.h"
#include "tests/random/promises.h"
#include "tests/random/sightings.h"

namespace pellow::random {

// A simulated desktop on which a history happens, with the program on it while it runs. Every
// promise is checked after every step, and what must hold at any moment also at every call of the
// program.
class World {
 public:
  explicit World(std::uint64_t seed);
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World();

  void perform(const Step& step);

  // The first promise that did not hold.
  const std::optional<Breach>& breach() const { return breach_; }
  // What has happened so far, line by line, in words.
  const std::vector<std::string>& story() const { return story_; }
  // What the program has logged so far, and what it calls when asked to record it.
  std::vector<std::string> log() const;
  void recordCalls();
  std::vector<std::string> takeCalls();
  std::uint64_t portCalls() const;

 private:
  using Window = simulated::Window;
  using Application = simulated::Application;

  void act(const Step& step);
  void byOthers(const Step& step);

  // Each answers what happens, in words; nothing when nothing can.
  std::string launch(int which);
  std::string open(int which, int kind, int place);
  std::string manners(int which, int manner, int detail);
  std::string temper(int which, int temper, int detail);
  std::string rename(int which, int title);
  std::string actOnWindow(Verb verb, int which, int detail);
  std::string actOnApplication(Verb verb, int which, int detail);
  std::string actOnDesktop(const Step& step);
  std::string plug(int side);
  std::string unplug(int which);
  std::string press(int key);
  std::string clickTab(int which);
  std::string restOn(int which);
  std::string openMenu(int which, int whose);
  std::string chooseItem(int item, int subitem);
  std::string dragStrip(int which, int x, int y);
  std::string answer(int button);
  std::string prefer(int setting, int value);
  std::string zones(int count, int edge);
  std::string pin(int application, int zone);
  std::string start();
  std::string end(const Step& step);
  std::string crashNow();
  void settle(int button);

  bool programRuns() const;
  bool hasLoggedLaunch() const;
  void run(Seconds duration);
  void runUntilQuiet();
  void look(Doer doer);
  void check();
  void checkQuiet();
  void onPortCall();
  void onEnded();
  void continueOn(simulated::DesktopState left, Sightings sightings, bool afterCrash);
  void say(std::string line);
  void setBreach(std::optional<Breach> breach);

  std::optional<Window> window(int which) const;
  std::optional<Application> application(int which) const;
  std::optional<Application> usualApplication(int which) const;

  // A tab of some strip, counted from the front strip to the back.
  struct Tab {
    const simulated::Panel* strip;
    std::string path;
    std::string name;
  };
  std::optional<Tab> tab(int which) const;
  const simulated::Panel* strip(int which) const;

  struct Crash {
    simulated::DesktopState left;
    Sightings sightings;
  };

  std::uint64_t seed_;
  std::unique_ptr<simulated::Desktop> desktop_;
  std::unique_ptr<AppDelegate> program_;
  Sightings sightings_;
  Promises promises_;
  std::optional<int> callsUntilCrash_;
  std::optional<Crash> crash_;
  bool isEnding_ = false;
  // What concerned the program when it began to end.
  std::set<simulated::WindowID> awayAtTheEnd_;
  std::size_t logAtStart_ = 0;
  bool hasBegun_ = false;
  int displays_ = 1;
  std::uint64_t callsBefore_ = 0;  // on earlier desktops
  bool recordsCalls_ = false;
  std::vector<std::string> calls_;
  std::optional<Breach> breach_;
  std::vector<std::string> story_;
};

}  // namespace pellow::random
