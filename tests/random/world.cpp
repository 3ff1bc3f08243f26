#include "tests/random/world.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <fmt/format.h>

namespace pellow::random {
namespace {

using simulated::DesktopState;

constexpr int mostRounds = 100;  // of answers until all is quiet

}  // namespace

World::World(std::uint64_t seed) : seed_(seed), desktop_(std::make_unique<simulated::Desktop>()) {
  look(Doer::others);
}

World::~World() {
  program_.reset();
  desktop_.reset();
}

void World::perform(const Step& step) {
  if (step.later > 0 && canBeLater(step.verb)) {
    say(fmt::format("in {} s: {}", step.later / 1000.0, text({step.verb, step.numbers})));
    desktop_->after(step.later / 1000.0, [this, step] { byOthers(step); });
  } else {
    act(step);
  }
  look(Doer::program);
  if (crash_) {
    say("the program crashes, and the desktop goes on as it was at that moment");
    auto crash = *std::exchange(crash_, std::nullopt);
    continueOn(std::move(crash.left), std::move(crash.sightings), true);
  }
  if (isEnding_ && !desktop_->process().isRunning()) onEnded();
  check();
}

void World::act(const Step& step) {
  switch (step.verb) {
    case Verb::run:
      say(fmt::format("{} s pass", step.numbers[0] / 1000.0));
      return run(step.numbers[0] / 1000.0);
    case Verb::quiet:
      say("until all is quiet");
      runUntilQuiet();
      if (desktop_->alerts().showing().empty()) checkQuiet();
      return;
    case Verb::settle:
      say("until all is quiet and every alert is answered");
      return settle(step.numbers[0]);
    case Verb::start:
      return say(start());
    case Verb::crash:
      return say(crashNow());
    default:
      return byOthers(step);
  }
}

// Tells what happens apart from what the program does around it.
void World::byOthers(const Step& step) {
  look(Doer::program);
  const auto what = actOnDesktop(step);
  look(Doer::others);
  say(what);
}

// Time

void World::run(Seconds duration) { desktop_->run(duration); }

void World::runUntilQuiet() {
  try {
    desktop_->runUntilQuiet();
  } catch (const std::exception& error) {
    setBreach(Breach{"the desktop becomes quiet again", error.what()});
  }
}

void World::settle(int button) {
  for (int round = 0; round < mostRounds && !breach_; ++round) {
    runUntilQuiet();
    if (desktop_->alerts().showing().empty()) return checkQuiet();
    say("  " + answer(button + round));
  }
  setBreach(Breach{"the program runs out of alerts", fmt::format("{} answered", mostRounds)});
}

// The program's life

bool World::programRuns() const { return program_ && desktop_->process().isRunning(); }

bool World::hasLoggedLaunch() const {
  const auto& log = desktop_->logged();
  return std::any_of(log.begin() + static_cast<std::ptrdiff_t>(logAtStart_), log.end(),
                     [](const simulated::LogLine& line) {
                       return line.message.starts_with("Permissions at launch");
                     });
}

std::string World::start() {
  if (programRuns()) return "";
  auto left = desktop_->snapshot();
  // The next launch meets no errors by chance: it cannot try its repairs twice.
  left.faultProbability = 0;
  continueOn(std::move(left), std::move(sightings_), false);
  auto& desktop = *desktop_;
  sightings_.launches(desktop.state());
  promises_ = {};
  logAtStart_ = desktop.logged().size();
  hasBegun_ = false;
  program_ = std::make_unique<AppDelegate>(*desktop_);
  desktop.process().onTerminate([this] { program_->applicationWillTerminate(); });
  program_->applicationDidFinishLaunching();
  return "the program starts";
}

// A failing call at the end is not tried again, so none fails by chance then.
std::string World::end(const Step& step) {
  if (!programRuns()) return "";
  auto& desktop = *desktop_;
  if (!isEnding_) {
    sightings_.beginsToEnd();
    awayAtTheEnd_.clear();
  }
  isEnding_ = true;
  desktop.accessibility().injectFaults(0);
  if (step.verb == Verb::quit) {
    desktop_->process().terminate();
    return "the user quits the program";
  }
  using enum TerminationSignal;
  constexpr std::array signals{terminate, interrupt, hangUp};
  const auto which = static_cast<std::size_t>(step.numbers[0]) % signals.size();
  desktop.process().receive(signals[which]);
  return "the program gets a termination signal";
}

void World::onEnded() {
  isEnding_ = false;
  auto& desktop = *desktop_;
  say("the program has ended");
  // Before it has begun, a signal ends it by the system's default.
  if (hasBegun_ && desktop.process().exitStatus() != 0)
    setBreach(Breach{"the program ends with status 0", "it was cut off"});
  setBreach(Promises::whenEnded(desktop, sightings_));
  sightings_.isLeftWith(parseJournal(desktop.userDefaults().afterCrash(journalKey)),
                        desktop.state());
  sightings_.settled(desktop.state(), [](simulated::WindowID) { return false; });
}

std::string World::crashNow() {
  if (!programRuns()) return "";
  continueOn(desktop_->snapshot(), sightings_, true);
  return "the program crashes";
}

// The next process begins on the desktop that the last one left.
void World::continueOn(DesktopState left, Sightings sightings, bool afterCrash) {
  desktop_->process().kill();
  if (recordsCalls_) std::ranges::copy(desktop_->history(), std::back_inserter(calls_));
  callsBefore_ += desktop_->portCalls();
  program_.reset();
  desktop_.reset();
  isEnding_ = false;
  callsUntilCrash_ = std::nullopt;
  crash_ = std::nullopt;

  sightings_ = std::move(sightings);
  desktop_ =
      std::make_unique<simulated::Desktop>(std::move(left), simulated::Options{.seed = ++seed_});
  auto& desktop = *desktop_;
  if (recordsCalls_) desktop.recordHistory();
  desktop.onPortCall([this](std::uint64_t) { onPortCall(); });
  if (afterCrash) {
    const auto records = parseJournal(desktop.userDefaults().afterCrash(journalKey));
    for (const auto& record : records)
      say(fmt::format("  in the journal: \"{}\" of {} from ({}, {}), parked at ({}, {})",
                      record.title, record.bundleID, record.originalOrigin.x,
                      record.originalOrigin.y, record.parkedOrigin.x, record.parkedOrigin.y));
    sightings_.isLeftWith(records, desktop.state());
  }
  look(Doer::others);
}

// Looking

void World::onPortCall() {
  look(Doer::program);
  check();
  if (callsUntilCrash_ && --*callsUntilCrash_ <= 0 && programRuns()) {
    callsUntilCrash_ = std::nullopt;
    crash_ = Crash{desktop_->snapshot(), sightings_};
  }
}

// At its end the program forgets its tabs before it has put back the last window.
void World::look(Doer doer) {
  auto& desktop = *desktop_;
  std::set<simulated::WindowID> away;
  if (programRuns()) away = AwayWindows(program_->controller(), desktop).windows();
  if (isEnding_) awayAtTheEnd_.merge(away);
  const auto& all = isEnding_ ? awayAtTheEnd_ : away;
  sightings_.look(desktop.state(), desktop.now(), doer,
                  [&](simulated::WindowID id) { return all.contains(id); });
}

// While it ends, the program keeps no record of what it has put back.
void World::check() {
  if (!programRuns() || isEnding_ || breach_) return;
  auto& desktop = *desktop_;
  if (!hasBegun_ && hasLoggedLaunch()) {
    hasBegun_ = true;
    promises_.whenBegun(desktop);
  }
  const AwayWindows away(program_->controller(), desktop);
  setBreach(promises_.always({desktop, program_->controller(), sightings_, away}));
}

void World::checkQuiet() {
  look(Doer::program);
  auto& desktop = *desktop_;
  if (isEnding_ && desktop.process().isRunning())
    setBreach(Breach{"the program ends when it is asked to", "it goes on"});
  if (breach_ || isEnding_ || crash_ || !hasBegun_ || !programRuns()) return;
  const AwayWindows away(program_->controller(), desktop);
  setBreach(promises_.whenQuiet({desktop, program_->controller(), sightings_, away}));
  sightings_.settled(desktop.state(), [&](simulated::WindowID id) { return away.contains(id); });
}

void World::setBreach(std::optional<Breach> breach) {
  if (!breach || breach_) return;
  breach_ = std::move(breach);
  say(fmt::format("  here is broken: {}: {}", breach_->promise, breach_->details));
}

void World::say(std::string line) {
  if (line.empty()) line = "nothing";
  story_.push_back(fmt::format("{:10.3f}  {}", desktop_->now(), line));
}

// For the developer

std::vector<std::string> World::log() const {
  std::vector<std::string> lines;
  for (const auto& line : desktop_->logged())
    lines.push_back(fmt::format("{:10.3f}  {}", line.time, line.message));
  return lines;
}

void World::recordCalls() {
  recordsCalls_ = true;
  desktop_->recordHistory();
}

std::vector<std::string> World::takeCalls() {
  std::ranges::copy(desktop_->history(), std::back_inserter(calls_));
  return std::exchange(calls_, {});
}

std::uint64_t World::portCalls() const { return callsBefore_ + desktop_->portCalls(); }

}  // namespace pellow::random
