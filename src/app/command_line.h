#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace pellow {

// A process that writes a report, and does nothing else.
enum class ReportMode { offscreen, capture };

// What the command line asks for.
struct RunProgram {};
struct WriteReport {
  ReportMode mode = ReportMode::offscreen;
};
struct PrintAndExit {
  std::string text;
  bool isError = false;  // on standard error, with status 2
};
using CommandLine = std::variant<RunProgram, WriteReport, PrintAndExit>;

// What a platform has of its own there.
struct CommandLineStyle {
  std::string_view version;         // the program's, for people
  std::string_view howItRuns;       // a sentence of the help
  bool hasSystemArguments = false;  // arguments without "--" are the system's
};

// `arguments` are those after the program's name.
CommandLine parseCommandLine(std::span<const char* const> arguments, const CommandLineStyle& style);

}  // namespace pellow
