#include "app/report_delegate.h"

#include <fmt/format.h>

#include <exception>
#include <string>

namespace pellow {
namespace {

constexpr const char* fileName(ReportMode mode) {
  return mode == ReportMode::offscreen ? "pellow-offscreen-diagnostic.txt"
                                       : "pellow-capture-diagnostic.txt";
}

std::string whatOf(const std::exception_ptr& error) {
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& known) {
    return known.what();
  } catch (...) {
    return "of an unknown kind";
  }
}

}  // namespace

ReportDelegate::ReportDelegate(Platform& platform, ReportMode mode)
    : platform_(platform),
      mode_(mode),
      displays_(platform.screens()),
      axQueue_(platform.queues(), "com.velloway.pellow.actions"),
      report_(fileName(mode), platform.process(), platform.files(), platform.log()),
      offscreen_({.accessibility = platform.accessibility(),
                  .axQueue = axQueue_,
                  .displays = displays_,
                  .mainQueue = platform.queues().main(),
                  .probeWindows = platform.probeWindows(),
                  .report = report_,
                  .screenCapture = platform.screenCapture(),
                  .screens = platform.screens(),
                  .texts = platform.texts(),
                  .workspace = platform.workspace(),
                  .ownProcess = platform.process().pid(),
                  .version = platform.updateFramework().currentVersion().value_or("unknown")}),
      capture_({.accessibility = platform.accessibility(),
                .axQueue = axQueue_,
                .mainQueue = platform.queues().main(),
                .report = report_,
                .screenCapture = platform.screenCapture(),
                .texts = platform.texts(),
                .workspace = platform.workspace(),
                .ownProcess = platform.process().pid()}),
      task_(
          [this](const std::exception_ptr& error) { fail("unexpected error: " + whatOf(error)); }) {
  platform.process().becomeAccessory();
}

void ReportDelegate::applicationDidFinishLaunching() {
  for (const auto signal :
       {TerminationSignal::terminate, TerminationSignal::interrupt, TerminationSignal::hangUp})
    signalSources_.push_back(
        platform_.process().onSignal(signal, [this] { fail("interrupted by a signal"); }));
  displays_.recordMainHeight();
  task_.start(run());
}

Task<> ReportDelegate::run() {
  if (mode_ == ReportMode::offscreen) {
    co_await offscreen_.run();
  } else {
    co_await capture_.diagnose();
  }
  report_.finish();
}

// The window that was tried goes with the process.
void ReportDelegate::fail(std::string_view why) {
  report_.emit(fmt::format("FAILED: {}.", why));
  report_.finish();
}

}  // namespace pellow
