#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "bench/bench_desktop.h"
#include "bench/stopwatch.h"
#include "tests/harness/desktop_session.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

// How far a strip is behind the pointer that drags it with a thousand events a second, beside an
// ordinary window that the window manager drags by its title bar.

namespace {

using namespace pellow::desktop;

constexpr int rounds = 5;
constexpr int events = 1000;       // in a round, one a millisecond
constexpr int pixelsPerEvent = 1;  // there, and as far back
constexpr double frame = 16.7;     // milliseconds

// Milliseconds behind, at each event.
std::vector<double> drag(DesktopSession& desktop, WindowID window, int dx, int dy) {
  const auto start = desktop.content(window);
  const int x = start.x + dx;
  const int y = start.y + dy;
  desktop.movePointer(x, y);
  desktop.press();
  std::vector<double> behind;
  auto next = Clock::now();
  for (int event = 1; event <= events; ++event) {
    const int moved = event <= events / 2 ? event : events - event;
    desktop.movePointer(x - moved * pixelsPerEvent, y);
    const int followed = start.x - desktop.content(window).x;
    // The first movements only make it a drag, and about the turn nobody can tell.
    if (event > 20 && std::abs(event - events / 2) > 40)
      behind.push_back(std::abs(moved - followed) / double(pixelsPerEvent));
    next += std::chrono::milliseconds(1);
    std::this_thread::sleep_until(next);
  }
  desktop.release();
  timeUntil("it comes to rest", Clock::now(),
            [&] { return std::abs(desktop.content(window).x - start.x) <= 6; });
  return behind;
}

void measure() {
  DesktopSession desktop;
  const SessionInMemory session;
  TestClient client(desktop);
  const auto window = client.open("Window", {800, 100, 300, 200});
  PellowProgram pellow(desktop, session.environment());
  if (!pellow.isReady()) throw std::runtime_error(pellow.process().standardError());
  std::vector<double> ofStrip;
  std::vector<double> ofWindow;
  const auto add = [](std::vector<double>& to, const std::vector<double>& from) {
    to.insert(to.end(), from.begin(), from.end());
  };
  for (int round = 0; round < rounds; ++round) {
    add(ofStrip, drag(desktop, pellow.strip(), 2, 30));
    add(ofWindow, drag(desktop, window, 100, -8));
  }
  print("strip behind the pointer", ofStrip, frame);
  print("window that the window manager drags", ofWindow, frame);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    readOptions(argc, argv, {});
    measure();
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
