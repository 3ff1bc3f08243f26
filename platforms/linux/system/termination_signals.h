#pragma once

#include <array>
#include <functional>
#include <memory>

#include "base/subscription.h"
#include "platform/process.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {

// SIGTERM, SIGINT and SIGHUP as events of the main loop. Blocks them in the thread that makes it
// and in every thread started afterwards, so it is made before any other thread. A signal that
// nobody has ever asked for ends the process, as it would without this.
class TerminationSignals {
 public:
  TerminationSignals();

  // Readable when `processPending` has something to do.
  int fileDescriptor() const { return descriptor_.number(); }

  // Calls the handlers of the signals that have come. Main thread.
  void processPending();

  // Replaces the handler of a signal. Dropping the subscription leaves the signal ignored.
  Subscription on(TerminationSignal signal, std::function<void()> handler);

 private:
  using Handler = std::shared_ptr<std::function<void()>>;

  void deliver(int number);

  FileDescriptor descriptor_;
  std::shared_ptr<std::array<Handler, 3>> handlers_;  // an empty one: nobody has ever asked
};

}  // namespace pellow
