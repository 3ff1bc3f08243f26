#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace pellow::desktop {

using Clock = std::chrono::steady_clock;

// Milliseconds from the start until the condition holds. Rests as long as each look took, so as not
// to take the processors from the programs it watches.
inline double timeUntil(const char* what, Clock::time_point start,
                        const std::function<bool()>& condition) {
  constexpr auto tooLong = std::chrono::seconds(60);
  for (auto asked = Clock::now(); !condition(); asked = Clock::now()) {
    if (asked - start > tooLong)
      throw std::runtime_error(fmt::format("waited in vain until {}", what));
    std::this_thread::sleep_for(Clock::now() - asked);
  }
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

inline void await(const char* what, const std::function<bool()>& condition) {
  timeUntil(what, Clock::now(), condition);
}

inline double percentile(std::vector<double> times, double share) {
  std::ranges::sort(times);
  return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
}

inline void print(const std::string& name, const std::vector<double>& times, double bound) {
  const auto within = std::ranges::count_if(times, [bound](double time) { return time <= bound; });
  fmt::print(
      "{:<36} median {:6.1f} ms   95 % {:6.1f} ms   slowest {:6.1f} ms   within {} ms {} %\n", name,
      percentile(times, 0.5), percentile(times, 0.95), percentile(times, 1), bound,
      100 * within / static_cast<long>(times.size()));
}

}  // namespace pellow::desktop
