#include "platforms/macos/system/mac_clock.h"

#include <time.h>

#include <chrono>
#include <thread>

namespace pellow {

Seconds MacClock::now() const {
  return static_cast<Seconds>(clock_gettime_nsec_np(CLOCK_UPTIME_RAW)) / 1e9;
}

void MacClock::sleep(Seconds duration) {
  std::this_thread::sleep_for(std::chrono::duration<Seconds>(duration));
}

}  // namespace pellow
