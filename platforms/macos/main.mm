#import <AppKit/AppKit.h>

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "app/command_line.h"
#include "base/log.h"
#include "platforms/macos/application_delegate.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/macos/system/log_sink.h"
#include "platforms/macos/system/mac_process.h"

namespace {

using pellow::ProcessID;

int print(const pellow::PrintAndExit& what) {
  std::fputs(what.text.c_str(), what.isError ? stderr : stdout);
  return what.isError ? 2 : EXIT_SUCCESS;
}

std::string version() {
  return pellow::toText(
      [NSBundle.mainBundle objectForInfoDictionaryKey:@"CFBundleShortVersionString"]);
}

// Set only for the process that the program starts to replace itself.
std::optional<ProcessID> readPredecessor() {
  const char* const value = std::getenv(pellow::MacProcess::predecessorVariable);
  const int pid = value ? std::atoi(value) : 0;
  unsetenv(pellow::MacProcess::predecessorVariable);
  if (pid <= 0) return std::nullopt;
  return pid;
}

// By the date of the launch, else by number. Not every process has a date: rather none stays than
// two.
bool isEarlier(NSRunningApplication* one, NSRunningApplication* other) {
  NSDate* const date = one.launchDate;
  NSDate* const otherDate = other.launchDate;
  if (!date || !otherDate) return true;
  const auto order = [date compare:otherDate];
  if (order != NSOrderedSame) return order == NSOrderedAscending;
  return one.processIdentifier < other.processIdentifier;
}

// Two would put each other's windows back. The system prevents that when people open the program,
// but not for `open -n` and the command line. Of two that start together, the earlier stays.
bool isAnotherRunning(std::optional<ProcessID> predecessor) {
  NSString* const identifier = NSBundle.mainBundle.bundleIdentifier;
  if (!identifier) return false;
  for (NSRunningApplication* each in
       [NSRunningApplication runningApplicationsWithBundleIdentifier:identifier]) {
    const auto pid = each.processIdentifier;
    if (pid <= 0 || pid == getpid() || pid == predecessor || kill(pid, 0) != 0) continue;
    if (isEarlier(each, NSRunningApplication.currentApplication)) return true;
  }
  return false;
}

// A report takes nobody's place, and may be written beside a Pellow that is running.
int run(std::optional<pellow::ReportMode> report) {
  std::signal(SIGPIPE, SIG_IGN);  // whoever reads the report may go away
  const pellow::Log log(pellow::makeLogSink());
  const auto predecessor = report ? std::nullopt : readPredecessor();
  NSApplication* const application = NSApplication.sharedApplication;
  [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
  if (!report && isAnotherRunning(predecessor)) {
    log.error("Pellow is running already");
    std::fputs("Pellow is running already.\n", stderr);
    return EXIT_FAILURE;
  }
  NS_VALID_UNTIL_END_OF_SCOPE PellowApplicationDelegate* const delegate =
      [[PellowApplicationDelegate alloc] initWithReport:report predecessor:predecessor log:&log];
  application.delegate = delegate;
  [application run];  // ends the process
  return EXIT_SUCCESS;
}

}  // namespace

// Arguments of the system are such as "-AppleLanguages (de)".
int main(int argc, char** argv) {
  @autoreleasepool {
    const auto programVersion = version();
    const auto commandLine = pellow::parseCommandLine(
        std::span<const char* const>(argv, static_cast<std::size_t>(argc)).subspan(1),
        {.version = programVersion,
         .howItRuns = "Runs until it is told to quit.",
         .hasSystemArguments = true});
    if (const auto* what = std::get_if<pellow::PrintAndExit>(&commandLine)) return print(*what);
    const auto* const report = std::get_if<pellow::WriteReport>(&commandLine);
    return run(report ? std::optional(report->mode) : std::nullopt);
  }
}
