#include "app/command_line.h"

#include <fmt/format.h>

namespace pellow {
namespace {

std::string usage(const CommandLineStyle& style) {
  return fmt::format(
      "Usage: pellow [--help | --version]\n"
      "\n"
      "Puts windows away and shows a tab for each at the side of the screen.\n"
      "{}\n",
      style.howItRuns);
}

}  // namespace

CommandLine parseCommandLine(std::span<const char* const> arguments,
                             const CommandLineStyle& style) {
  RunProgram program;
  for (const std::string_view argument : arguments) {
    if (argument == "--help") return PrintAndExit{usage(style)};
    if (argument == "--version") return PrintAndExit{fmt::format("pellow {}\n", style.version)};
    if (argument.starts_with("--") || !style.hasSystemArguments)
      return PrintAndExit{fmt::format("pellow does not know \"{}\".\n{}", argument, usage(style)),
                          true};
    program.arguments.emplace_back(argument);
  }
  return program;
}

}  // namespace pellow
