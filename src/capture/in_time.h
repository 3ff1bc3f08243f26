#pragma once

#include <array>
#include <expected>
#include <functional>
#include <memory>
#include <utility>

#include "base/answer.h"
#include "base/subscription.h"
#include "platform/queues.h"
#include "platform/system_error.h"

namespace pellow {

// The question, put to the capture service: silence for 2 s is an error, since windows wait for
// their pictures. Main thread.
template <class Result>
Answer<Result>::Ask inTime(MainQueue& queue, typename Answer<Result>::Ask ask) {
  constexpr Seconds patience = 2;
  return [&queue, ask = std::move(ask)](std::function<void(Result)> onAnswer) {
    auto waiting = std::make_shared<std::array<Subscription, 2>>();
    (*waiting)[0] = queue.after(patience, [onAnswer] {
      onAnswer(std::unexpected(SystemError{"Screen capture did not answer in time."}));
    });
    (*waiting)[1] = ask(onAnswer);
    return Subscription([waiting] {
      for (auto& each : *waiting) each.cancel();
    });
  };
}

}  // namespace pellow
