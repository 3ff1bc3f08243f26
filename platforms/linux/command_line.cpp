#include "platforms/linux/command_line.h"

#include <fmt/format.h>

#include <string_view>

namespace pellow {
namespace {

constexpr std::string_view usage =
    "Usage: pellow [--help | --version]\n"
    "\n"
    "Puts windows away and shows a tab for each at the side of the screen.\n"
    "Runs in the foreground on the X display that DISPLAY names, until it is told to quit.\n";

}  // namespace

CommandLine parseCommandLine(std::span<const char* const> arguments) {
  for (const std::string_view argument : arguments) {
    if (argument == "--help") return PrintAndExit{std::string(usage)};
    if (argument == "--version") return PrintAndExit{"pellow " PELLOW_VERSION "\n"};
    return PrintAndExit{fmt::format("pellow does not know \"{}\".\n{}", argument, usage), true};
  }
  return RunProgram{};
}

}  // namespace pellow
