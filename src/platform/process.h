#pragma once

#include <expected>
#include <functional>
#include <string_view>

#include "base/subscription.h"
#include "platform/ax_element.h"
#include "platform/system_error.h"

namespace pellow {

enum class TerminationSignal { terminate, interrupt, hangUp };  // SIGTERM, SIGINT, SIGHUP

// This process among the others. Main thread.
class Process {
 public:
  virtual ~Process() = default;

  virtual ProcessID pid() const = 0;

  // An agent: no Dock icon, no main menu.
  virtual void becomeAccessory() = 0;

  // Calls the handler on the main queue for every such signal instead of letting it end the
  // process. Dropping the subscription leaves the signal ignored.
  virtual Subscription onSignal(TerminationSignal signal, std::function<void()> handler) = 0;

  // Writes a line to standard output, at once. Whoever should read it may have gone away.
  virtual void print(std::string_view line) = 0;

  // Ends the process with this status, without normal termination. On a simulated desktop it
  // returns, and nothing of the process runs after that.
  virtual void exit(int status) = 0;

  // Ends the main loop; the program then terminates normally. May never return: do not call it from
  // a coroutine or from work that others wait for.
  virtual void terminate() = 0;

  // Starts the program a second time and reports on the main queue whether that worked. The new
  // process waits for this one to end.
  virtual void launchNewInstance(
      std::function<void(std::expected<void, SystemError>)> onLaunched) = 0;
};

}  // namespace pellow
