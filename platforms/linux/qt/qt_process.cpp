#include "platforms/linux/qt/qt_process.h"

#include <unistd.h>

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "platforms/linux/system/programs.h"
#include "platforms/posix/standard_output.h"

namespace pellow {

QtProcess::QtProcess(TerminationSignals& signals, std::function<void()> beforeExit)
    : signals_(signals), beforeExit_(std::move(beforeExit)) {}

ProcessID QtProcess::pid() const { return getpid(); }

// An application is in docks and taskbars by its ordinary windows alone.
void QtProcess::becomeAccessory() {}

Subscription QtProcess::onSignal(TerminationSignal signal, std::function<void()> handler) {
  return signals_.on(signal, std::move(handler));
}

void QtProcess::print(std::string_view line) { printLine(line); }

// Without destructors: other threads may be in the middle of something.
void QtProcess::exit(int status) {
  beforeExit_();
  std::fflush(nullptr);
  // A thread that waits for a slow disk may keep the process alive for a while, but not its windows
  // nor its place on the display.
  close_range(STDERR_FILENO + 1, ~0U, 0);
  std::_Exit(status);
}

// Not `quit`, which would first ask every window to close.
void QtProcess::terminate() { QCoreApplication::exit(); }

void QtProcess::launchNewInstance(
    std::function<void(std::expected<void, SystemError>)> onLaunched) {
  auto outcome = startProgram({ownExecutable()}, ProgramOutput::shared,
                              {std::string(relaunchedVariable) + "=1"});
  QMetaObject::invokeMethod(
      QCoreApplication::instance(),
      [onLaunched = std::move(onLaunched), outcome = std::move(outcome)] { onLaunched(outcome); },
      Qt::QueuedConnection);
}

}  // namespace pellow
