#pragma once

#include "base/answer.h"
#include "platform/queues.h"

namespace pellow {

// To be awaited: the main loop goes on meanwhile. The value says nothing.
inline Answer<bool> pause(MainQueue& queue, Seconds duration) {
  return Answer<bool>([&queue, duration](auto onOver) {
    return queue.after(duration, [onOver] { onOver(true); });
  });
}

}  // namespace pellow
