#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "tests/random/history.h"
#include "tests/random/runner.h"
#include "tests/random/shrink.h"

// Plays random histories until a promise of the program breaks, and then tells how in few words.

namespace pellow::random {
namespace {

constexpr std::string_view usage =
    R"(usage: random_histories [options]

Plays histories made from seeds, one after another, and asks after every step whether the program
keeps its promises. Ends with status 1 when one was broken.

  --seed N           the first seed (1)
  --seeds N          how many (until --steps or --minutes are used up; 100 when neither is given)
  --steps N          end after so many steps in all
  --minutes N        end after so long
  --length N         steps of one history (90)
  --faults on|off    with or without calls that fail by chance (odd seeds with, even ones without)
  --keep-going       go on after a failure, with the next seed
  --no-shrink        do not shorten failing histories
  --print            print the history of the first seed, and play nothing
  --replay HISTORY   play this one history, given as text or as a file with the text, and tell all
  --calls            with --replay: and every call of the program
)";

struct Options {
  std::uint64_t seed = 1;
  std::optional<std::uint64_t> seeds;
  std::optional<std::uint64_t> steps;
  std::optional<double> minutes;
  int length = 90;
  std::optional<bool> faults;
  bool keepsGoing = false;
  bool shrinks = true;
  bool prints = false;
  std::optional<std::string> replay;
  bool calls = false;
};

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Whether there is such an option. Throws when there is no such value for it.
bool set(Options& options, std::string_view option, const std::function<std::string()>& value) {
  const std::map<std::string_view, std::function<void()>> setters{
      {"--seed", [&] { options.seed = std::stoull(value()); }},
      {"--seeds", [&] { options.seeds = std::stoull(value()); }},
      {"--steps", [&] { options.steps = std::stoull(value()); }},
      {"--minutes", [&] { options.minutes = std::stod(value()); }},
      {"--length", [&] { options.length = std::stoi(value()); }},
      {"--faults",
       [&] {
         options.faults = std::map<std::string, bool>{{"on", true}, {"off", false}}.at(value());
       }},
      {"--replay", [&] { options.replay = value(); }},
      {"--keep-going", [&] { options.keepsGoing = true; }},
      {"--no-shrink", [&] { options.shrinks = false; }},
      {"--print", [&] { options.prints = true; }},
      {"--calls", [&] { options.calls = true; }}};
  const auto setter = setters.find(option);
  if (setter != setters.end()) setter->second();
  return setter != setters.end();
}

std::optional<Options> parseOptions(std::span<char* const> words) {
  Options options;
  try {
    auto word = words.begin();
    const auto next = [&] {
      if (word == words.end()) throw std::out_of_range("no value");
      return std::string(*word++);
    };
    while (word != words.end())
      if (const auto option = next(); !set(options, option, next)) return std::nullopt;
  } catch (const std::logic_error&) {
    return std::nullopt;
  }
  if (!options.seeds && !options.steps && !options.minutes) options.seeds = 100;
  return options;
}

void printLines(std::string_view title, const std::vector<std::string>& lines) {
  fmt::print("{}\n", title);
  for (const auto& line : lines) fmt::print("  {}\n", line);
}

int replay(const Options& options) {
  std::string text = *options.replay;
  if (std::ifstream file(text); file)
    text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  const auto history = parse(text);
  if (!history) {
    std::cerr << "That is no history.\n";
    return 2;
  }
  const auto outcome = playApart(*history, Record::everything);
  printLines("What happened:", outcome.story);
  printLines("What the program logged:", outcome.log);
  if (options.calls) printLines("What the program called:", outcome.portCalls);
  if (!outcome.promise) {
    fmt::print("Every promise was kept.\n");
    return 0;
  }
  fmt::print("Broken: {}\n  {}\n", *outcome.promise, outcome.details);
  return 1;
}

void tell(std::uint64_t seed, History history, const Outcome& outcome, bool shrinks) {
  fmt::print("\nSeed {} breaks a promise after {} steps: {}\n  {}\n", seed, outcome.steps,
             *outcome.promise, outcome.details);
  std::fflush(stdout);
  if (outcome.steps > 0) history.steps.resize(static_cast<std::size_t>(outcome.steps));
  if (shrinks)
    history = shrink(std::move(history), [&](const History& candidate) {
      return playApart(candidate).promise == outcome.promise;
    });
  const auto again = playApart(history, Record::everything);
  printLines(fmt::format("In {} steps:", history.steps.size()), again.story);
  fmt::print("Replay: random_histories --replay '{}'\n", text(history));
  std::fflush(stdout);
}

History historyOf(std::uint64_t seed, const Options& options) {
  return generate(seed, options.length, options.faults.value_or(seed % 2 == 1));
}

int playAll(const Options& options) {
  const auto start = Clock::now();
  std::uint64_t steps = 0;
  std::uint64_t calls = 0;
  std::uint64_t failures = 0;
  auto seed = options.seed;
  const auto isOver = [&] {
    return (options.seeds && seed - options.seed >= *options.seeds) ||
           (options.steps && steps >= *options.steps) ||
           (options.minutes && secondsSince(start) >= 60 * *options.minutes);
  };
  for (; !isOver(); ++seed) {
    const auto history = historyOf(seed, options);
    const auto outcome = playApart(history);
    steps += static_cast<std::uint64_t>(outcome.steps);
    calls += outcome.calls;
    if (!outcome.promise) continue;
    ++failures;
    tell(seed, history, outcome, options.shrinks);
    if (!options.keepsGoing) break;
  }
  const auto seconds = secondsSince(start);
  fmt::print(
      "{} steps and {} calls of the program in {} histories, {:.0f} s ({:.0f} steps a second): "
      "{} broken promise(s)\n",
      steps, calls, seed - options.seed, seconds, static_cast<double>(steps) / seconds, failures);
  return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace pellow::random

int main(int count, char** words) {
  using namespace pellow::random;
  const auto options = parseOptions(std::span(words, static_cast<std::size_t>(count)).subspan(1));
  if (!options) {
    std::cerr << usage;
    return 2;
  }
  if (options->prints) {
    fmt::print("{}\n", text(historyOf(options->seed, *options)));
    return 0;
  }
  return options->replay ? replay(*options) : playAll(*options);
}
