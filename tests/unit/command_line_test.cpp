#include "app/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pellow {
namespace {

CommandLine parse(const std::vector<const char*>& arguments, bool hasSystemArguments = false) {
  return parseCommandLine(
      arguments,
      {.version = "1.2", .howItRuns = "Runs for ever.", .hasSystemArguments = hasSystemArguments});
}

const std::string help =
    "Usage: pellow [--help | --version]\n"
    "\n"
    "Puts windows away and shows a tab for each at the side of the screen.\n"
    "Runs for ever.\n";

TEST(CommandLine, RunsTheProgramWithoutArguments) {
  EXPECT_TRUE(std::holds_alternative<RunProgram>(parse({})));
}

TEST(CommandLine, PrintsTheHelpAndTheVersion) {
  EXPECT_EQ(std::get<PrintAndExit>(parse({"--help"})).text, help);
  EXPECT_EQ(std::get<PrintAndExit>(parse({"--version"})).text, "pellow 1.2\n");
  EXPECT_FALSE(std::get<PrintAndExit>(parse({"--version"})).isError);
}

TEST(CommandLine, NamesTheArgumentItDoesNotKnow) {
  for (const std::string argument : {"window", "--windows", "-h", ""}) {
    const auto printed = std::get<PrintAndExit>(parse({argument.c_str(), "--help"}));
    EXPECT_EQ(printed.text, "pellow does not know \"" + argument + "\".\n" + help);
    EXPECT_TRUE(printed.isError);
  }
}

TEST(CommandLine, LeavesTheSystemItsArguments) {
  const auto program = std::get<RunProgram>(parse({"-AppleLanguages", "(de)"}, true));
  EXPECT_EQ(program.arguments, (std::vector<std::string>{"-AppleLanguages", "(de)"}));
  EXPECT_TRUE(
      std::get<PrintAndExit>(parse({"-AppleLanguages", "(de)", "--windows"}, true)).isError);
}

}  // namespace
}  // namespace pellow
