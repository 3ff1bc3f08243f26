#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/harness/desktop_session.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

// How long it takes from a key press to the window off the screen, seen from outside, beside what a
// shell script would use to put the same window away. Both on one private desktop, in turns.

namespace {

using namespace pellow::desktop;
using Clock = std::chrono::steady_clock;

constexpr int rounds = 200;
constexpr auto tooLong = std::chrono::seconds(5);

// Milliseconds from the start until the condition holds; asks without a pause.
double timeUntil(const char* what, Clock::time_point start,
                 const std::function<bool()>& condition) {
  while (!condition())
    if (Clock::now() - start > tooLong)
      throw std::runtime_error(fmt::format("waited in vain until {}", what));
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void await(const char* what, const std::function<bool()>& condition) {
  timeUntil(what, Clock::now(), condition);
}

double percentile(std::vector<double> times, double share) {
  std::ranges::sort(times);
  return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
}

void print(const std::string& name, const std::vector<double>& times) {
  const auto within = std::ranges::count_if(times, [](double time) { return time <= 25; });
  fmt::print(
      "{:<36} median {:5.1f} ms   95 % {:5.1f} ms   slowest {:5.1f} ms   within 25 ms {} %\n", name,
      percentile(times, 0.5), percentile(times, 0.95), percentile(times, 1),
      100 * within / static_cast<long>(times.size()));
}

void measure() {
  DesktopSession desktop;
  TestClient client(desktop);
  // What the script minimizes is not to become a tab.
  PellowProgram::writeDefaults(desktop, {{"pellowOnMinimize", false}});
  PellowProgram pellow(desktop);
  if (!pellow.isReady()) throw std::runtime_error("Pellow does not start");
  // The script has a window of its own: openbox animates one that it minimizes for a while after.
  const auto scripted = client.open("Scripted", {620, 120, 500, 300});
  const auto window = client.open("Measured", {100, 120, 500, 300});
  const auto home = desktop.frame(window);

  std::vector<double> parked;
  std::vector<double> minimized;
  for (int round = 0; round < rounds; ++round) {
    await("the window is active", [&] { return desktop.activate(window); });
    const auto pressed = Clock::now();
    desktop.type({key::control, key::alt, key::super, 't'});
    parked.push_back(timeUntil("the window is parked", pressed, [&] {
      return desktop.content(window).x >= desktop.screen().width - 1;
    }));
    await("there is a tab", [&] { return pellow.tabCount() == 1; });
    // Pellow is done with the window only when it has made it active.
    await("the other window is active", [&] { return desktop.activate(scripted); });
    pellow.clickTab(0);
    await("the window is back",
          [&] { return desktop.frame(window) == home && desktop.activeWindow() == window; });

    await("the other window is active", [&] { return desktop.activate(scripted); });
    const auto id = std::to_string(scripted);
    const auto started = Clock::now();
    desktop.start({"xdotool", "windowminimize", "--sync", id})->exitStatus();
    minimized.push_back(timeUntil("the other window is minimized", started, [&] {
      return desktop.hasState(scripted, "_NET_WM_STATE_HIDDEN");
    }));
    desktop.start({"xdotool", "windowmap", "--sync", id})->exitStatus();
  }
  print("Pellow, key press to parked", parked);
  print("xdotool windowminimize --sync", minimized);
  fmt::print("ratio of the medians {:.2f}\n", percentile(parked, 0.5) / percentile(minimized, 0.5));
}

}  // namespace

int main() {
  try {
    measure();
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
