#include <fmt/format.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
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

// How long it takes from the start of the process until a look from outside finds the strip on the
// screen, beside the window of an empty Qt Widgets program. Both on one private desktop with a few
// windows, in turns, their files read before.
//
//   --busy-disk   the disk of the user defaults is kept busy meanwhile

namespace {

using namespace pellow::desktop;

constexpr int rounds = 40;
constexpr int windows = 10;
constexpr double bound = 150;  // milliseconds

class Launches {
 public:
  explicit Launches(const Options& options) {
    for (int index = 0; index < windows; ++index)
      client_.open("Window " + std::to_string(index), {40 + 30 * index, 40 + 20 * index, 500, 300});
    if (options.contains("--busy-disk")) busyDisk_.emplace(desktop_.configHome());
  }

  double ofPellow() {
    const auto start = Clock::now();
    PellowProgram pellow(desktop_, session_.environment());
    const double time = timeUntil("the strip shows", start, [&] { return pellow.strip() != 0; });
    if (!pellow.isReady()) throw std::runtime_error(pellow.process().standardError());
    pellow.process().send(SIGTERM);
    pellow.process().exitStatus();
    return time;
  }

  double ofEmptyProgram() {
    const auto start = Clock::now();
    const auto program = desktop_.start({PELLOW_EMPTY_QT_PROGRAM},
                                        {{"QT_XCB_GL_INTEGRATION", "none"}});  // as Pellow has it
    return timeUntil("the empty window shows", start, [&] {
      return !desktop_.shownWindows("empty_qt_program", "empty_qt_program").empty();
    });
  }

 private:
  DesktopSession desktop_;
  SessionInMemory session_;
  TestClient client_{desktop_};
  std::optional<BusyDisk> busyDisk_;
};

void measure(const Options& options) {
  Launches launches(options);
  launches.ofPellow();
  launches.ofEmptyProgram();
  std::vector<double> pellow;
  std::vector<double> empty;
  for (int round = 0; round < rounds; ++round) {
    pellow.push_back(launches.ofPellow());
    empty.push_back(launches.ofEmptyProgram());
  }
  print("Pellow, start to first strip", pellow, bound);
  print("empty Qt program, start to window", empty, bound);
  fmt::print("ratio of the medians {:.2f}\n", percentile(pellow, 0.5) / percentile(empty, 0.5));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    measure(readOptions(argc, argv, {"--busy-disk"}));
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
