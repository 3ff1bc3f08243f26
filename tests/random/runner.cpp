#include "tests/random/runner.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include "tests/random/shrink.h"
#include "tests/random/world.h"

namespace pellow::random {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Outcome, details, steps, calls, story, log, portCalls)

namespace {

constexpr unsigned longestPlay = 120;  // seconds of the real clock: more is a hang
constexpr std::string_view beginOfOutcome = "\x01outcome\x01";

std::string encode(const Outcome& outcome) {
  nlohmann::json json = outcome;
  if (outcome.promise) json["promise"] = *outcome.promise;
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Outcome decode(std::string_view text) {
  const auto json = nlohmann::json::parse(text);
  auto outcome = json.get<Outcome>();
  if (json.contains("promise")) outcome.promise = json.at("promise").get<std::string>();
  return outcome;
}

void writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const auto written = ::write(file, text.data(), text.size());
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::string readAll(int file) {
  std::string all;
  char buffer[65536];
  for (ssize_t got = 0; (got = ::read(file, buffer, sizeof buffer)) > 0;)
    all.append(buffer, static_cast<std::size_t>(got));
  return all;
}

// Runs in the process of its own; standard error goes the same way as the outcome.
[[noreturn]] void playIn(int file, const History& history, Record record) {
  ::dup2(file, STDERR_FILENO);
  ::alarm(longestPlay);
  writeAll(file, std::string(beginOfOutcome) + encode(play(history, record)));
  ::_exit(0);
}

std::string causeOfDeath(int status) {
  if (!WIFSIGNALED(status)) return fmt::format("ended with status {}", WEXITSTATUS(status));
  if (WTERMSIG(status) == SIGALRM) return fmt::format("still ran after {} s", longestPlay);
  return fmt::format("died of signal {}", WTERMSIG(status));
}

}  // namespace

Outcome play(const History& history, Record record) {
  Outcome outcome;
  try {
    World world(history.seed);
    if (record == Record::everything) world.recordCalls();
    for (const auto& step : history.steps) {
      world.perform(step);
      ++outcome.steps;
      if (!world.breach()) continue;
      outcome.promise = world.breach()->promise;
      outcome.details = world.breach()->details;
      break;
    }
    outcome.calls = world.portCalls();
    if (record == Record::everything) {
      outcome.story = world.story();
      outcome.log = world.log();
      outcome.portCalls = world.takeCalls();
    }
  } catch (const std::exception& error) {
    outcome.promise = "the program goes on";
    outcome.details = error.what();
  }
  return outcome;
}

Outcome playApart(const History& history, Record record) {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
  std::fflush(nullptr);
  const auto child = ::fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) {
    ::close(ends[0]);
    playIn(ends[1], history, record);
  }
  ::close(ends[1]);
  const auto said = readAll(ends[0]);
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (const auto begin = said.find(beginOfOutcome); begin != std::string::npos && status == 0)
    return decode(std::string_view(said).substr(begin + beginOfOutcome.size()));
  return {.promise = "the program goes on",
          .details = causeOfDeath(status) + "\n" + said.substr(0, said.find(beginOfOutcome))};
}

std::string tell(History history, const Outcome& outcome) {
  auto words = fmt::format("Seed {} breaks a promise after {} steps: {}\n  {}\n", history.seed,
                           outcome.steps, *outcome.promise, outcome.details);
  if (outcome.steps > 0) history.steps.resize(static_cast<std::size_t>(outcome.steps));
  history = shrink(std::move(history), [&](const History& candidate) {
    return playApart(candidate).promise == outcome.promise;
  });
  words += fmt::format("In {} steps:\n", history.steps.size());
  for (const auto& line : playApart(history, Record::everything).story) words += "  " + line + "\n";
  return words + fmt::format("Replay: random_histories --replay '{}'\n", text(history));
}

}  // namespace pellow::random
