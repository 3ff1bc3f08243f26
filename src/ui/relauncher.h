#pragma once

#include "base/log.h"
#include "platform/process.h"

namespace pellow {

// Ends this process for a new one of the same program. Main thread.
class Relauncher {
 public:
  Relauncher(Process& process, const Log& log) : process_(process), log_(log) {}
  Relauncher(const Relauncher&) = delete;
  Relauncher& operator=(const Relauncher&) = delete;

  // Starts the new process, and once that has worked, terminates this one as if the user had quit.
  // A failure is only logged.
  void relaunch();

 private:
  Process& process_;
  const Log& log_;
  bool isUnderWay_ = false;
};

}  // namespace pellow
