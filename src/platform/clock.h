#pragma once

namespace pellow {

using Seconds = double;

// The only clock of the program.
class Clock {
 public:
  virtual ~Clock() = default;

  // Seconds since a moment of the platform's choice; never goes back. Any thread.
  virtual Seconds now() const = 0;

  // Blocks the calling thread. For serial queues, and for the blocking work at the end of the
  // process.
  virtual void sleep(Seconds duration) = 0;
};

}  // namespace pellow
