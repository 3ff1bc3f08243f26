#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace pellow {

// What the command line asks for.
struct RunProgram {
  std::vector<std::string> arguments;
};
struct PrintAndExit {
  std::string text;
  bool isError = false;  // on standard error, with status 2
};
using CommandLine = std::variant<RunProgram, PrintAndExit>;

// `arguments` are those after the program's name. Those of the system, such as
// "-AppleLanguages (de)", are left to it. `version` is the program's, for people.
CommandLine parseCommandLine(std::span<const char* const> arguments, std::string_view version);

}  // namespace pellow
