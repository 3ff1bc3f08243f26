#include "tests/random/history.h"

#include <algorithm>
#include <charconv>
#include <concepts>
#include <random>
#include <ranges>
#include <sstream>
#include <utility>

#include <fmt/format.h>

namespace pellow::random {
namespace {

enum class Needs { nothing, faults };

struct Row {
  Verb verb;
  std::string_view name;
  int numbers;
  int weight;  // how often it comes up; 0: only where put on purpose
  bool canBeLater = true;
  Needs needs = Needs::nothing;
};

constexpr auto rows = std::to_array<Row>({
    {Verb::launch, "launch", 1, 4},
    {Verb::open, "open", 3, 12},
    {Verb::manners, "manners", 3, 14},
    {Verb::temper, "temper", 3, 6},
    {Verb::rename, "rename", 2, 6},
    {Verb::resize, "resize", 2, 4},
    {Verb::hang, "hang", 2, 10},
    {Verb::wake, "wake", 1, 6},
    {Verb::quitApplication, "quit-application", 1, 3},
    {Verb::killApplication, "kill-application", 1, 2},
    {Verb::press, "press", 1, 120},
    {Verb::tab, "tab", 1, 90},
    {Verb::rest, "rest", 1, 12},
    {Verb::menu, "menu", 2, 25},
    {Verb::item, "item", 2, 5},
    {Verb::drag, "drag", 3, 8},
    {Verb::minimize, "minimize", 1, 20},
    {Verb::unminimize, "unminimize", 1, 10},
    {Verb::close, "close", 1, 6},
    {Verb::move, "move", 2, 10},
    {Verb::raise, "raise", 1, 10},
    {Verb::choose, "choose", 1, 45},
    {Verb::activate, "activate", 1, 30},
    {Verb::hide, "hide", 1, 4},
    {Verb::unhide, "unhide", 1, 5},
    {Verb::answer, "answer", 1, 16},
    {Verb::prefer, "prefer", 2, 20},
    {Verb::zones, "zones", 2, 3},
    {Verb::pin, "pin", 2, 3},
    {Verb::plug, "plug", 1, 5},
    {Verb::unplug, "unplug", 1, 4},
    {Verb::dock, "dock", 1, 3},
    {Verb::faults, "faults", 2, 10, true, Needs::faults},
    {Verb::delays, "delays", 3, 8},
    {Verb::failWrite, "fail-write", 0, 4, true, Needs::faults},
    {Verb::trust, "trust", 1, 4, true, Needs::faults},
    {Verb::capture, "capture", 1, 4},
    {Verb::run, "run", 1, 150, false},
    {Verb::quiet, "quiet", 0, 10, false},
    {Verb::settle, "settle", 1, 12, false},
    {Verb::start, "start", 0, 6, false},
    {Verb::quit, "quit", 0, 2},
    {Verb::signal, "signal", 1, 4},
    {Verb::crash, "crash", 0, 4, false},
    {Verb::crashIn, "crash-in", 1, 16},
});

const Row& row(Verb verb) { return *std::ranges::find(rows, verb, &Row::verb); }

constexpr int length = 90;
constexpr int largestNumber = 999;
constexpr int fewCalls = 25;  // of the program, until it crashes
constexpr int manyCalls = 150;

class Generator {
 public:
  Generator(std::uint64_t seed, bool faults) : randomness_(seed), faults_(faults) {
    for (const auto& each : rows)
      if (faults_ || each.needs == Needs::nothing) totalWeight_ += each.weight;
  }

  std::vector<Step> steps(int count) {
    setTheScene();
    while (std::ssize(steps_) < count) {
      addStep();
      std::erase_if(planned_, [&](const auto& plan) {
        if (plan.first > std::ssize(steps_)) return false;
        steps_.push_back(plan.second);
        return true;
      });
    }
    end();
    return std::move(steps_);
  }

 private:
  int number(int bound) { return static_cast<int>(randomness_() % static_cast<unsigned>(bound)); }
  int between(int least, int most) { return least + number(most - least + 1); }
  bool oneIn(int chances) { return number(chances) == 0; }

  Step make(Verb verb) {
    Step step{.verb = verb};
    for (int index = 0; index < row(verb).numbers; ++index)
      step.numbers[static_cast<std::size_t>(index)] = number(largestNumber + 1);
    return step;
  }
  Step& add(Verb verb) { return steps_.emplace_back(make(verb)); }
  // Plans the end of what begins now, or the other way round.
  void plan(Step step, int withinSteps) {
    planned_.emplace_back(std::ssize(steps_) + number(withinSteps), step);
  }

  void setTheScene() {
    for (int extra = between(-1, 2); extra > 0; --extra) add(Verb::plug);
    for (int more = between(2, 3); more > 0; --more) add(Verb::launch).numbers[0] = number(4);
    for (int more = between(0, 3); more > 0; --more) add(Verb::launch);
    for (int more = between(4, 12); more > 0; --more) add(Verb::open);
    for (int more = between(0, 3); more > 0; --more) add(Verb::manners);
    if (oneIn(3)) add(Verb::temper);
    if (oneIn(3)) add(Verb::zones);
    if (oneIn(3)) add(Verb::pin);
    add(Verb::prefer).numbers[0] = 0;
    for (int more = between(0, 3); more > 0; --more) add(Verb::prefer);
    add(Verb::start);
  }

  Verb choose() {
    auto left = number(totalWeight_);
    for (const auto& each : rows) {
      if (!faults_ && each.needs != Needs::nothing) continue;
      left -= each.weight;
      if (left < 0) return each.verb;
    }
    return Verb::run;
  }

  void addStep() {
    auto& step = add(choose());
    auto& first = step.numbers[0];
    switch (step.verb) {
      case Verb::run:
        first = oneIn(8)   ? 0
                : oneIn(3) ? between(1, 9)
                : oneIn(4) ? between(2000, 6000)
                           : between(50, 500);
        return;
      case Verb::faults:
        first = oneIn(2) ? 0 : between(1, 30);
        return;
      case Verb::delays:
        for (auto& each : step.numbers) each = oneIn(2) ? 0 : number(600);
        return;
      case Verb::trust:
        first = 0;
        return plan({Verb::trust, {1}}, 10);
      case Verb::hang:
        if (oneIn(4)) return;
        return plan({Verb::wake, step.numbers}, 20);
      case Verb::crashIn:
        first = between(1, oneIn(4) ? manyCalls : fewCalls);
        return plan({Verb::start}, 12);
      case Verb::crash:
      case Verb::quit:
      case Verb::signal:
        return plan({Verb::start}, 4);
      case Verb::menu:
        add(Verb::run).numbers[0] = number(300);
        add(Verb::item);
        return;
      default:
        if (canBeLater(step.verb) && oneIn(8)) step.later = between(1, 1500);
        // By then what was asked for is under way, or done.
        if ((step.verb == Verb::press || step.verb == Verb::tab) && oneIn(2))
          add(Verb::run).numbers[0] = number(300);
    }
  }

  void end() {
    add(Verb::faults).numbers = {};
    add(Verb::trust).numbers = {1};
    add(Verb::start);
    add(Verb::settle);
    add(oneIn(2) ? Verb::signal : Verb::quit);
    add(Verb::settle);
  }

  std::mt19937_64 randomness_;
  bool faults_;
  int totalWeight_ = 0;
  std::vector<Step> steps_;
  std::vector<std::pair<std::ptrdiff_t, Step>> planned_;
};

template <std::unsigned_integral Number>
std::optional<Number> parseNumber(std::string_view word) {
  Number number = 0;
  const auto [end, error] = std::from_chars(word.begin(), word.end(), number);
  if (error != std::errc() || end != word.end()) return std::nullopt;
  return number;
}

std::optional<Step> parseStep(const std::vector<std::string>& words) {
  const auto found = std::ranges::find(rows, words.front(), &Row::name);
  if (found == rows.end()) return std::nullopt;
  Step step{.verb = found->verb};
  std::size_t next = 0;
  for (const auto& word : words | std::views::drop(1)) {
    const bool isLater = word.starts_with("@");
    const auto number = parseNumber<std::uint16_t>(std::string_view(word).substr(isLater ? 1 : 0));
    if (!number || (!isLater && next == step.numbers.size())) return std::nullopt;
    (isLater ? step.later : step.numbers[next++]) = *number;
  }
  return step;
}

}  // namespace

bool canBeLater(Verb verb) { return row(verb).canBeLater; }

std::string text(const Step& step) {
  std::string line(row(step.verb).name);
  const auto last = std::ranges::find_if(step.numbers.rbegin(), step.numbers.rend(),
                                         [](int number) { return number != 0; });
  for (auto number = step.numbers.begin(); number != last.base(); ++number)
    line += fmt::format(" {}", *number);
  if (step.later > 0) line += fmt::format(" @{}", step.later);
  return line;
}

std::string text(const History& history) {
  auto line = fmt::format("seed {}", history.seed);
  for (const auto& step : history.steps) line += "; " + text(step);
  return line;
}

std::optional<History> parse(std::string_view text) {
  History history;
  std::string all(text);
  std::ranges::replace(all, ';', '\n');
  std::istringstream lines(all);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream split(line.substr(0, line.find('#')));
    std::vector<std::string> words;
    for (std::string word; split >> word;) words.push_back(word);
    if (words.empty()) continue;
    if (words.front() == "seed") {
      const auto seed = words.size() == 2 ? parseNumber<std::uint64_t>(words[1]) : std::nullopt;
      if (!seed) return std::nullopt;
      history.seed = *seed;
      continue;
    }
    const auto step = parseStep(words);
    if (!step) return std::nullopt;
    history.steps.push_back(*step);
  }
  return history;
}

History generate(std::uint64_t seed) {
  return {.seed = seed, .steps = Generator(seed, seed % 2 == 1).steps(length)};
}

}  // namespace pellow::random
