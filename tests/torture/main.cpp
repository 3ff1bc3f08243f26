#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>

#include "tests/torture/torture.h"

namespace {

using pellow::desktop::Torture;

constexpr int reportEvery = 50;

struct Options {
  int kills = 1000;
  int seed = 1;
};

Options parse(int count, char** arguments) {
  Options options;
  for (int index = 1; index < count; index += 2) {
    char* end = nullptr;
    const auto number = index + 1 < count ? std::strtol(arguments[index + 1], &end, 10) : -1;
    const std::string_view name = arguments[index];
    if (number < 0 || *end != '\0' || (name != "--kills" && name != "--seed")) {
      fmt::print(stderr, "Usage: torture [--kills N] [--seed N]\n");
      std::exit(2);
    }
    (name == "--kills" ? options.kills : options.seed) = static_cast<int>(number);
  }
  return options;
}

void print(const Torture::Tally& tally) {
  fmt::print(
      "{} kills: {} with windows away, {} with many windows half done; {} windows lost, "
      "{} misplaced\n",
      tally.kills, tally.withWindowsAway, tally.halfDone, tally.lost, tally.misplaced);
  std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
  const auto options = parse(count, arguments);
  try {
    Torture torture(static_cast<unsigned>(options.seed), std::cout);
    while (torture.tally().kills < options.kills) {
      torture.kill();
      const auto kills = torture.tally().kills;
      if (kills % reportEvery == 0 || kills == options.kills) print(torture.tally());
    }
    return torture.tally().lost == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return EXIT_FAILURE;
  }
}
