#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

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

}  // namespace pellow::desktop
