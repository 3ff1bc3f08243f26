#include <fmt/format.h>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/bench_desktop.h"
#include "bench/stopwatch.h"
#include "tests/harness/desktop_session.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

// How long it takes to put many windows away by one key, seen from outside, beside a loop of wmctrl
// over the same windows. Both on one private desktop, in turns, with the settings of a first start
// or without flights.
//
// wmctrl asks for the move and goes on; Pellow writes each window's journal record, moves
// it, and looks where it stands. openbox leaves a tenth of what wmctrl moves on the screen.
//
// Beside them stands the floor for any program: the server's time to move the same frames to where
// Pellow puts them, once each, requested in one batch and without a window manager.

namespace {

using namespace pellow::desktop;
using Clock = std::chrono::steady_clock;

constexpr auto tooLong = std::chrono::seconds(120);

struct Times {
  std::vector<double> away;  // milliseconds
  std::vector<double> back;
  std::vector<double> scripted;  // wmctrl
  std::vector<double> bare;      // the server alone
  std::vector<double> own;       // Pellow's processor time for the way out, all threads
};

double median(std::vector<double> times) {
  std::ranges::sort(times);
  return times[times.size() / 2];
}

// The frame that the window manager has put around the window.
xcb_window_t outermost(xcb_connection_t* connection, xcb_window_t window) {
  for (;;) {
    const std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr), std::free);
    if (!tree) throw std::runtime_error("a window is gone");
    if (tree->parent == tree->root) return window;
    window = tree->parent;
  }
}

enum class Flights { off, asOnFirstStart };

class Desk {
 public:
  Desk(int applications, int windows, Flights flights) {
    if (flights == Flights::off) PellowProgram::writeDefaults(desktop_, {{"animateFlight", false}});
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
    const double before = processorTime(pellow_->process());
    times.away.push_back(timeUntilAll("the windows are away", [&] { press('a'); }, &Desk::isAway));
    // The last window is away before its tab stands and its flight has ended.
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    times.own.push_back(processorTime(pellow_->process()) - before);
    times.back.push_back(timeUntilAll("the windows are back", [&] { press('r'); }, &Desk::isBack));
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    times.scripted.push_back(
        timeUntilAll("wmctrl has moved the windows", [&] { runScript(true); }, &Desk::hasLeft));
    timeUntilAll("wmctrl has moved them back", [&] { runScript(false); }, &Desk::isBack);
    times.bare.push_back(timeOfBareMoves());
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

  double timeOfBareMoves() const {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(desktop_.display().c_str(), nullptr), xcb_disconnect);
    auto* const raw = connection.get();
    const auto move = [&](xcb_window_t frame, int x, int y) {
      const auto setBypass = [&](std::uint32_t bypass) {
        xcb_change_window_attributes(raw, frame, XCB_CW_OVERRIDE_REDIRECT, &bypass);
      };
      const std::array<std::int32_t, 2> place{x, y};
      setBypass(1);
      xcb_configure_window(raw, frame, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data());
      setBypass(0);
    };
    const auto sync = [&] {
      std::free(xcb_get_input_focus_reply(raw, xcb_get_input_focus(raw), nullptr));
    };
    std::vector<xcb_window_t> frames;
    for (const auto& guest : windows_) frames.push_back(outermost(raw, guest.window));
    const auto screen = desktop_.screen();
    sync();
    const auto start = Clock::now();
    for (const auto frame : frames) move(frame, screen.width - 1, screen.height - 28);
    sync();
    const auto end = Clock::now();
    for (std::size_t index = 0; index < frames.size(); ++index)
      move(frames[index], windows_[index].home.x, windows_[index].home.y);
    sync();
    return std::chrono::duration<double, std::milli>(end - start).count();
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

// Milliseconds of the median turn.
struct Medians {
  double away = 0;
  double scripted = 0;
  double bare = 0;
  double own = 0;
};

Medians measure(int applications, int windows, int turns, Flights flights = Flights::off) {
  Desk desk(applications, windows, flights);
  Times times;
  for (int turn = 0; turn < turns; ++turn) desk.turn(times);
  const Medians medians{median(times.away), median(times.scripted), median(times.bare),
                        median(times.own)};
  fmt::print(
      "{:3} windows of {:2} applications{}: away {:7.1f} ms (best {:.1f}), wmctrl {:7.1f} ms, "
      "ratio "
      "{:.2f}; the server alone {:5.1f} ms; Pellow's processor time {:5.1f} ms; back {:7.1f} ms\n",
      windows, applications, flights == Flights::off ? "" : ", flights on", medians.away,
      std::ranges::min(times.away), medians.scripted, medians.away / medians.scripted, medians.bare,
      medians.own, median(times.back));
  std::fflush(stdout);
  return medians;
}

}  // namespace

// With three numbers, applications, windows and turns, only that is measured; a word after them
// leaves flights on.
int main(int count, char** arguments) {
  try {
    if (count >= 4) {
      measure(std::stoi(arguments[1]), std::stoi(arguments[2]), std::stoi(arguments[3]),
              count > 4 ? Flights::asOnFirstStart : Flights::off);
      return EXIT_SUCCESS;
    }
    measure(50, 50, 7, Flights::asOnFirstStart);
    measure(50, 50, 7);
    const auto fifty = measure(1, 50, 7);
    const auto fiveHundred = measure(1, 500, 3);
    fmt::print(
        "500 windows take {:.1f} times as long as 50, by wmctrl {:.1f} times, the server alone "
        "{:.1f} times, Pellow's processor time {:.1f} times\n",
        fiveHundred.away / fifty.away, fiveHundred.scripted / fifty.scripted,
        fiveHundred.bare / fifty.bare, fiveHundred.own / fifty.own);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
