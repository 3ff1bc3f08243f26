#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "bench/bench_desktop.h"
#include "bench/stopwatch.h"
#include "tests/harness/desktop_session.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

// How much memory Pellow takes with ten tabs, after flights, beside an empty Qt Widgets program
// that runs on the same desktop at the same time. What two programs share counts half for each.

namespace {

using namespace pellow::desktop;

constexpr int windows = 10;
constexpr double limit = 8;  // megabytes more than the empty program

struct Memory {
  double all = 0;
  double ofFiles = 0;
};

// Proportional set size, in megabytes.
Memory memoryOf(ChildProcess& process) {
  std::ifstream file("/proc/" + std::to_string(process.pid()) + "/smaps_rollup");
  Memory memory;
  for (std::string name; file >> name;) {
    double kilobytes = 0;
    if (name == "Pss:" && file >> kilobytes) memory.all = kilobytes / 1024;
    if (name == "Pss_File:" && file >> kilobytes) memory.ofFiles = kilobytes / 1024;
  }
  if (memory.all == 0) throw std::runtime_error("the system does not tell how much memory it is");
  return memory;
}

void print(const char* name, const Memory& memory) {
  fmt::print("{:<18} {:5.1f} MB, of files {:5.1f} MB\n", name, memory.all, memory.ofFiles);
}

bool isWithinLimit() {
  DesktopSession desktop;
  const SessionInMemory session;
  TestClient client(desktop);
  for (int index = 0; index < windows; ++index)
    client.open("Window " + std::to_string(index), {40 + 30 * index, 40 + 20 * index, 500, 300});
  const auto empty = desktop.start({PELLOW_EMPTY_QT_PROGRAM},
                                   {{"QT_XCB_GL_INTEGRATION", "none"}});  // as Pellow has it
  await("there are the windows", [&] { return desktop.clients().size() == windows + 1; });
  PellowProgram pellow(desktop, session.environment());
  if (!pellow.isReady()) throw std::runtime_error("Pellow does not start");

  const auto press = [&](char letter) {
    desktop.type({key::control, key::alt, key::super, static_cast<KeySym>(letter)});
  };
  const auto nothingFlies = [&] { return desktop.shownWindows("pellow", "pellow-flight").empty(); };
  for (int turn = 0; turn < 3; ++turn) {
    press('a');
    // The empty program's window goes, too.
    await("there are the tabs", [&] { return pellow.tabCount() == windows + 1; });
    std::this_thread::sleep_for(std::chrono::seconds(1));
    await("nothing flies", nothingFlies);
    if (turn == 2) break;
    press('r');
    await("there are no tabs", [&] { return pellow.tabCount() == 0; });
    std::this_thread::sleep_for(std::chrono::seconds(1));
    await("nothing flies", nothingFlies);
  }
  const auto own = memoryOf(pellow.process());
  const auto other = memoryOf(*empty);
  print("Pellow", own);
  print("empty Qt program", other);
  fmt::print("{:.1f} MB above it, {} allowed\n", own.all - other.all, limit);
  return own.all - other.all <= limit;
}

}  // namespace

int main() {
  try {
    return isWithinLimit() ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
