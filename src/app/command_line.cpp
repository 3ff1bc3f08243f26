#include "app/command_line.h"

#include <fmt/format.h>

#include <optional>

namespace pellow {
namespace {

std::string usage(const CommandLineStyle& style) {
  return fmt::format(
      "Usage: pellow [--help | --version | --diagnose-offscreen | --diagnose-capture]\n"
      "\n"
      "Puts windows away and shows a tab for each at the side of the screen.\n"
      "{}\n"
      "\n"
      "  --diagnose-offscreen  report how far windows can leave the screen here, and end\n"
      "  --diagnose-capture    report which windows can be photographed here, and end\n",
      style.howItRuns);
}

}  // namespace

CommandLine parseCommandLine(std::span<const char* const> arguments,
                             const CommandLineStyle& style) {
  std::optional<ReportMode> report;
  for (const std::string_view argument : arguments) {
    if (argument == "--help") return PrintAndExit{usage(style)};
    if (argument == "--version") return PrintAndExit{fmt::format("pellow {}\n", style.version)};
    if (argument == "--diagnose-offscreen") {
      report = ReportMode::offscreen;
    } else if (argument == "--diagnose-capture") {
      report = report.value_or(ReportMode::capture);
    } else if (argument.starts_with("--") || !style.hasSystemArguments) {
      return PrintAndExit{fmt::format("pellow does not know \"{}\".\n{}", argument, usage(style)),
                          true};
    }
  }
  if (report) return WriteReport{*report};
  return RunProgram{};
}

}  // namespace pellow
