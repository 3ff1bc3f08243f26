#pragma once

#include <chrono>
#include <thread>

namespace pellow::desktop {

// Asks again and again until `holds()` is true; false when the bound has passed. The bound is no
// measure of speed: it only ends a failed test.
template <class Predicate>
[[nodiscard]] bool eventually(Predicate holds,
                              std::chrono::seconds bound = std::chrono::seconds(30)) {
  const auto end = std::chrono::steady_clock::now() + bound;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

}  // namespace pellow::desktop
