#include "platforms/macos/command_line.h"

#include <fmt/format.h>

namespace pellow {
namespace {

constexpr std::string_view usage =
    "Usage: pellow [--help | --version]\n"
    "\n"
    "Puts windows away and shows a tab for each at the side of the screen.\n"
    "Runs until it is told to quit.\n";

}  // namespace

CommandLine parseCommandLine(std::span<const char* const> arguments, std::string_view version) {
  RunProgram program;
  for (const std::string_view argument : arguments) {
    if (argument == "--help") return PrintAndExit{std::string(usage)};
    if (argument == "--version") return PrintAndExit{fmt::format("pellow {}\n", version)};
    if (argument.starts_with("--"))
      return PrintAndExit{fmt::format("pellow does not know \"{}\".\n{}", argument, usage), true};
    program.arguments.emplace_back(argument);
  }
  return program;
}

}  // namespace pellow
