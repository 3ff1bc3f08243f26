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
    "Usage: pellow [--help | --version | --diagnose-offscreen | --diagnose-capture]\n"
    "\n"
    "Puts windows away and shows a tab for each at the side of the screen.\n"
    "Runs for ever.\n"
    "\n"
    "  --diagnose-offscreen  report how far windows can leave the screen here, and end\n"
    "  --diagnose-capture    report which windows can be photographed here, and end\n";

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

TEST(CommandLine, TheReportOfTheScreenComesBeforeTheOneOfPictures) {
  constexpr auto offscreen = "--diagnose-offscreen";
  constexpr auto capture = "--diagnose-capture";
  const auto mode = [](const auto& arguments) {
    return std::get<WriteReport>(parse(arguments, true)).mode;
  };
  EXPECT_EQ(mode(std::vector{capture, "-NSQuitAlwaysKeepsWindows"}), ReportMode::capture);
  EXPECT_EQ(mode(std::vector{capture, offscreen}), ReportMode::offscreen);
  EXPECT_EQ(mode(std::vector{offscreen, capture}), ReportMode::offscreen);
}

TEST(CommandLine, LeavesTheSystemItsArguments) {
  EXPECT_TRUE(std::holds_alternative<RunProgram>(parse({"-AppleLanguages", "(de)"}, true)));
  EXPECT_TRUE(
      std::get<PrintAndExit>(parse({"-AppleLanguages", "(de)", "--windows"}, true)).isError);
}

}  // namespace
}  // namespace pellow
