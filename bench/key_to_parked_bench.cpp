#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/bench_desktop.h"
#include "bench/busy_disk.h"
#include "bench/stopwatch.h"
#include "tests/harness/desktop_session.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

// How long it takes from a key press to the window off the screen, seen from outside, beside what a
// shell script would use to put the same window away. Both on one private desktop, in turns.
//
//   --busy-disk         the disk of the user defaults is kept busy meanwhile
//   --journal-on-disk   there is no folder of the session in memory

namespace {

using namespace pellow::desktop;

constexpr int rounds = 200;
constexpr double bound = 25;  // milliseconds

void measure(const Options& options) {
  DesktopSession desktop;
  const SessionInMemory session;
  TestClient client(desktop);
  // What the script minimizes is not to become a tab.
  PellowProgram::writeDefaults(desktop, {{"pellowOnMinimize", false}});
  PellowProgram pellow(
      desktop, options.contains("--journal-on-disk") ? withoutSession() : session.environment());
  if (!pellow.isReady()) throw std::runtime_error("Pellow does not start");
  // The script has a window of its own: openbox animates one that it minimizes for a while after.
  const auto scripted = client.open("Scripted", {620, 120, 500, 300});
  const auto window = client.open("Measured", {100, 120, 500, 300});
  const auto home = desktop.frame(window);

  std::optional<BusyDisk> busyDisk;
  if (options.contains("--busy-disk")) busyDisk.emplace(desktop.configHome());
  std::vector<double> parked;
  std::vector<double> minimized;
  for (int round = 0; round < rounds; ++round) {
    await("the window is active", [&] { return desktop.activate(window); });
    await("nothing flies", [&] { return desktop.shownWindows("pellow", "pellow-flight").empty(); });
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
  print("Pellow, key press to parked", parked, bound);
  print("xdotool windowminimize --sync", minimized, bound);
  fmt::print("ratio of the medians {:.2f}\n", percentile(parked, 0.5) / percentile(minimized, 0.5));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    measure(readOptions(argc, argv, {"--busy-disk", "--journal-on-disk"}));
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
