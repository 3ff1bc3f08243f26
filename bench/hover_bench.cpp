#include <fmt/format.h>
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>

#include "bench/bench_desktop.h"
#include "bench/stopwatch.h"
#include "tests/harness/desktop_session.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

// What it costs to look for minimize buttons below a pointer that moves steadily with a thousand
// events a second, and what the same movement costs the server while nobody looks.

namespace {

using namespace pellow::desktop;

constexpr int rounds = 3;
constexpr int seconds = 10;
constexpr int events = 1000 * seconds;

// Zigzags over the windows and their title bars; the seconds it took.
double movePointer(DesktopSession& desktop) {
  const auto start = Clock::now();
  auto next = start;
  for (int event = 0; event < events; ++event) {
    const int step = event % 1600;
    desktop.movePointer(200 + std::abs(step - 800), 80 + event / 25);
    next += std::chrono::milliseconds(1);
    std::this_thread::sleep_until(next);
  }
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void measure() {
  DesktopSession desktop;
  const SessionInMemory session;
  TestClient client(desktop);
  for (int index = 0; index < 10; ++index)
    client.open(fmt::format("Window {}", index), {100 + 60 * index, 60 + 40 * index, 500, 300});
  for (int round = 0; round < rounds; ++round) {
    for (const bool withPellow : {false, true}) {
      std::unique_ptr<PellowProgram> pellow;
      if (withPellow) {
        pellow = std::make_unique<PellowProgram>(desktop, session.environment());
        if (!pellow->isReady()) throw std::runtime_error(pellow->process().standardError());
        std::this_thread::sleep_for(std::chrono::seconds(1));
      }
      const auto own = [&] { return pellow ? processorTime(pellow->process()) : 0; };
      const double ownBefore = own();
      const double serverBefore = processorTime(desktop.server());
      const double took = movePointer(desktop);
      const auto share = [&](double milliseconds) { return milliseconds / took / 10; };
      fmt::print("{:<15} {:4.0f} events a second   own {:5.2f} %   server {:5.2f} % of one core\n",
                 withPellow ? "with Pellow" : "without Pellow", events / took,
                 share(own() - ownBefore), share(processorTime(desktop.server()) - serverBefore));
      if (!pellow) continue;
      pellow->process().send(SIGTERM);
      pellow->process().exitStatus();
    }
  }
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
