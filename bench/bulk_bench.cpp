#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/desktop/desktop_session.h"
#include "tests/desktop/pellow_program.h"
#include "tests/desktop/test_client.h"

// How long it takes to put many windows away by one key, seen from outside, beside a loop of wmctrl
// over the same windows. Both on one private desktop, in turns, without flights.
//
// wmctrl asks for the move and goes on; Pellow writes each window's journal record to disk, moves
// it, and looks where it stands. openbox leaves a tenth of what wmctrl moves on the screen.

namespace {

using namespace pellow::desktop;
using Clock = std::chrono::steady_clock;

constexpr auto tooLong = std::chrono::seconds(120);

struct Times {
  std::vector<double> away;  // milliseconds
  std::vector<double> back;
  std::vector<double> scripted;  // wmctrl
};

double median(std::vector<double> times) {
  std::ranges::sort(times);
  return times[times.size() / 2];
}

class Desk {
 public:
  Desk(int applications, int windows) {
    PellowProgram::writeDefaults(desktop_, {{"animateFlight", false}});
    for (int index = 0; index < applications; ++index)
      clients_.push_back(
          std::make_unique<TestClient>(desktop_, "Application" + std::to_string(index)));
    for (int index = 0; index < windows; ++index) {
      auto& client = *clients_[static_cast<std::size_t>(index % applications)];
      const PixelRect place{20 + 13 * (index % 40), 20 + 11 * (index % 37), 400, 260};
      const auto window = client.open("Window " + std::to_string(index), place);
      windows_.push_back({window, desktop_.frame(window)});
    }
    pellow_ = std::make_unique<PellowProgram>(desktop_);
    if (!pellow_->isReady()) throw std::runtime_error("Pellow does not start");
  }

  void turn(Times& times) {
    times.away.push_back(timeUntilAll("the windows are away", [&] { press('a'); }, &Desk::isAway));
    // The last window is away before its tab stands.
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    times.back.push_back(timeUntilAll("the windows are back", [&] { press('r'); }, &Desk::isBack));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    times.scripted.push_back(
        timeUntilAll("wmctrl has moved the windows", [&] { runScript(true); }, &Desk::hasLeft));
    timeUntilAll("wmctrl has moved them back", [&] { runScript(false); }, &Desk::isBack);
  }

 private:
  struct Guest {
    WindowID window;
    PixelRect home;
  };
  using Condition = bool (Desk::*)(const Guest&) const;

  bool isAway(const Guest& guest) const {
    return desktop_.content(guest.window).x >= desktop_.screen().width - 1;
  }
  bool isBack(const Guest& guest) const { return desktop_.frame(guest.window) == guest.home; }
  bool hasLeft(const Guest& guest) const {
    return desktop_.content(guest.window).x > guest.home.x + guest.home.width;
  }

  void press(char letter) {
    desktop_.type({key::control, key::alt, key::super, static_cast<KeySym>(letter)});
  }

  void runScript(bool away) {
    std::string script;
    for (const auto& [window, home] : windows_) {
      const int x = away ? desktop_.screen().width - 1 : home.x;
      const int y = away ? desktop_.screen().height - 28 : home.y;
      script += fmt::format("wmctrl -i -r {} -e 0,{},{},-1,-1\n", window, x, y);
    }
    if (desktop_.start({"sh", "-e", "-c", script})->exitStatus() != 0)
      throw std::runtime_error("wmctrl does not run");
  }

  // Looks at one window at a time, until it is where it should be: watching all of them all the
  // time would keep the server from its work.
  double timeUntilAll(const char* what, const std::function<void()>& begin, Condition condition) {
    const auto start = Clock::now();
    begin();
    for (const auto& guest : windows_) {
      while (!(this->*condition)(guest)) {
        if (Clock::now() - start > tooLong)
          throw std::runtime_error(fmt::format("waited in vain until {}", what));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    }
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  }

  DesktopSession desktop_;
  std::vector<std::unique_ptr<TestClient>> clients_;
  std::vector<Guest> windows_;
  std::unique_ptr<PellowProgram> pellow_;
};

// Milliseconds until all were away, in the median turn.
struct Medians {
  double away = 0;
  double scripted = 0;
};

Medians measure(int applications, int windows, int turns) {
  Desk desk(applications, windows);
  Times times;
  for (int turn = 0; turn < turns; ++turn) desk.turn(times);
  const auto away = median(times.away);
  const auto scripted = median(times.scripted);
  fmt::print(
      "{:3} windows of {:2} applications: away {:7.1f} ms (best {:.1f}), wmctrl {:7.1f} ms, ratio "
      "{:.2f}; back {:7.1f} ms\n",
      windows, applications, away, std::ranges::min(times.away), scripted, away / scripted,
      median(times.back));
  std::fflush(stdout);
  return {away, scripted};
}

}  // namespace

// With three numbers, applications, windows and turns, only that is measured.
int main(int count, char** arguments) {
  try {
    if (count == 4) {
      measure(std::stoi(arguments[1]), std::stoi(arguments[2]), std::stoi(arguments[3]));
      return EXIT_SUCCESS;
    }
    measure(50, 50, 7);
    const auto fifty = measure(1, 50, 7);
    const auto fiveHundred = measure(1, 500, 3);
    fmt::print("500 windows take {:.1f} times as long as 50, by wmctrl {:.1f} times\n",
               fiveHundred.away / fifty.away, fiveHundred.scripted / fifty.scripted);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
