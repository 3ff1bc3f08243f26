#pragma once

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace pellow::desktop {

// Asks again and again until `holds()` is true; false when the bound has passed. The bound is no
// measure of speed: it only ends a failed test. The longer it takes, the longer are the pauses:
// questions without a pause starve a compositor that is to paint what they wait for.
template <class Predicate>
[[nodiscard]] bool eventually(Predicate holds,
                              std::chrono::seconds bound = std::chrono::seconds(30)) {
  using std::chrono::milliseconds;
  const auto start = std::chrono::steady_clock::now();
  while (!holds()) {
    const auto waited = std::chrono::steady_clock::now() - start;
    if (waited > bound) return false;
    std::this_thread::sleep_for(
        std::clamp<std::chrono::nanoseconds>(waited / 4, milliseconds(2), milliseconds(250)));
  }
  return true;
}

// Waits until `read()` has answered the same for so long.
template <class Read>
[[nodiscard]] bool comesToRest(Read read, std::chrono::milliseconds rest) {
  using Clock = std::chrono::steady_clock;
  auto last = read();
  auto since = Clock::now();
  return eventually([&] {
    const auto before = std::exchange(last, read());
    if (last != before) since = Clock::now();
    return Clock::now() - since > rest;
  });
}

}  // namespace pellow::desktop
