#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "app/app_delegate.h"
#include "app/command_line.h"
#include "app/report_delegate.h"
#include "base/log.h"
#include "platforms/linux/linux_platform.h"
#include "platforms/linux/qt/qt_application.h"
#include "platforms/linux/qt/qt_process.h"
#include "platforms/linux/system/environment.h"
#include "platforms/linux/system/log_sink.h"
#include "platforms/linux/system/programs.h"
#include "platforms/linux/system/termination_signals.h"
#include "platforms/linux/x11/x11_desktop.h"

namespace {

using namespace pellow;

// At login Pellow may be started first.
constexpr Seconds windowManagerPatience = 10;

int print(const PrintAndExit& what) {
  std::fputs(what.text.c_str(), what.isError ? stderr : stdout);
  return what.isError ? 2 : EXIT_SUCCESS;
}

// Set only for the process that the program starts to replace itself.
LinuxPlatform::Claim readClaim() {
  const bool relaunched = !environment(QtProcess::relaunchedVariable).empty();
  unsetenv(QtProcess::relaunchedVariable);
  return relaunched ? LinuxPlatform::Claim::afterPredecessorEnds : LinuxPlatform::Claim::now;
}

// Prepares the process and opens the platform for `run`.
template <class RunOnPlatform>
int runOnPlatform(LinuxPlatform::Claim claim, RunOnPlatform run) {
  const GivenEnvironment environment;  // before Qt and what prepares it change theirs
  std::signal(SIGPIPE, SIG_IGN);       // whoever reads the log may go away
  const Log log(makeLogSink());
  if (const auto problem = LinuxPlatform::whyNoDisplay()) {
    log.error("{}", problem->sentence);
    return EXIT_FAILURE;
  }
  // While it waits, a signal ends the process as it always does.
  X11Desktop::awaitWindowManager("", windowManagerPatience, log);
  TerminationSignals signals;

  QtApplication application;
  const auto platform = LinuxPlatform::open(claim, log, signals);
  if (!platform) {
    log.error("{}", platform.error().sentence);
    return EXIT_FAILURE;
  }
  return run(application, **platform);
}

int runProgram(QtApplication& application, LinuxPlatform& platform) {
  AppDelegate delegate(platform);
  application.onSaveSession = [&] {
    platform.setPatient(true);
    delegate.sessionWillBeSaved();
    platform.setPatient(false);
  };
  const auto launch = platform.queues().main().async([&] {
    delegate.applicationDidFinishLaunching();
    platform.setPatient(false);
  });
  const int status = application.run();
  platform.setPatient(true);
  delegate.applicationWillTerminate();
  return status;
}

int writeReport(QtApplication& application, LinuxPlatform& platform, ReportMode mode) {
  ReportDelegate delegate(platform, mode);
  const auto launch =
      platform.queues().main().async([&] { delegate.applicationDidFinishLaunching(); });
  const int status = application.run();
  delegate.applicationWillTerminate();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const auto commandLine = parseCommandLine(
      std::span<const char* const>(argv, static_cast<std::size_t>(argc)).subspan(1),
      {.version = PELLOW_VERSION,
       .howItRuns = "Runs in the foreground on the X display that DISPLAY names, until it is told "
                    "to quit."});
  if (const auto* what = std::get_if<PrintAndExit>(&commandLine)) return print(*what);
  if (const auto* report = std::get_if<WriteReport>(&commandLine))
    return runOnPlatform(LinuxPlatform::Claim::none, [report](auto& application, auto& platform) {
      return writeReport(application, platform, report->mode);
    });
  return runOnPlatform(readClaim(), runProgram);
}
