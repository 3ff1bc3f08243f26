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

// Plays random histories until the program breaks a promise, and then tells how in few words.

namespace pellow::random {
namespace {

constexpr std::string_view usage =
    R"(usage: random_histories [options]

Plays histories made from seeds, one after another, and asks after every step whether the program
keeps its promises. Ends with status 1 when one was broken.

  --seed N           the first seed (1)
  --seeds N          how many (until --minutes are used up; 100 when it is not given)
  --minutes N        end after so long
  --keep-going       go on after a failure, with the next seed
  --print            print the history of the first seed, and play nothing
  --replay HISTORY   play this one history, given as text or as a file with the text, and tell all
  --calls            with --replay: and every call of the program
)";

struct Options {
  std::uint64_t seed = 1;
  std::optional<std::uint64_t> seeds;
  std::optional<double> minutes;
  bool keepsGoing = false;
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
      {"--minutes", [&] { options.minutes = std::stod(value()); }},
      {"--replay", [&] { options.replay = value(); }},
      {"--keep-going", [&] { options.keepsGoing = true; }},
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
  if (!options.seeds && !options.minutes) options.seeds = 100;
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

int playAll(const Options& options) {
  const auto start = Clock::now();
  std::uint64_t steps = 0;
  std::uint64_t calls = 0;
  std::uint64_t failures = 0;
  auto seed = options.seed;
  const auto isOver = [&] {
    return (options.seeds && seed - options.seed >= *options.seeds) ||
           (options.minutes && secondsSince(start) >= 60 * *options.minutes);
  };
  for (; !isOver(); ++seed) {
    const auto history = generate(seed);
    const auto outcome = playApart(history);
    steps += static_cast<std::uint64_t>(outcome.steps);
    calls += outcome.calls;
    if (!outcome.promise) continue;
    ++failures;
    fmt::print("\n{}", tell(history, outcome));
    std::fflush(stdout);
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
    fmt::print("{}\n", text(generate(options->seed)));
    return 0;
  }
  return options->replay ? replay(*options) : playAll(*options);
}
