#include "platforms/linux/system/monotonic_clock.h"

#include <chrono>
#include <thread>

namespace pellow {

Seconds MonotonicClock::now() const {
  return std::chrono::duration<Seconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void MonotonicClock::sleep(Seconds duration) {
  std::this_thread::sleep_for(std::chrono::duration<Seconds>(duration));
}

}  // namespace pellow
