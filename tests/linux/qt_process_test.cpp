#include "platforms/linux/qt/qt_process.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include "tests/harness/eventually.h"

namespace pellow::desktop {
namespace {

constexpr auto markVariable = "PELLOW_TEST_MARK";

// A new instance of this process is a run of this test alone, which leaves a mark.
TEST(QtProcess, LaunchesTheProgramOnceMore) {
  if (const char* const mark = std::getenv(markVariable)) {
    std::ofstream(mark) << std::getenv(QtProcess::relaunchedVariable) << std::flush;
    return;
  }
  const auto mark =
      std::filesystem::path(testing::TempDir()) / ("pellow-instance-" + std::to_string(getpid()));
  setenv(markVariable, mark.c_str(), 1);
  setenv("GTEST_FILTER", "QtProcess.LaunchesTheProgramOnceMore", 1);
  setenv("GTEST_REPEAT", "1", 1);
  setenv("GTEST_BRIEF", "1", 1);

  int count = 1;
  char name[] = "pellow";
  char* arguments[] = {name, nullptr};
  const QCoreApplication application(count, arguments);
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  TerminationSignals signals;
  QtProcess process(signals, [] {});
  std::optional<std::expected<void, SystemError>> outcome;
  process.launchNewInstance([&](const auto& answer) { outcome = answer; });
  EXPECT_FALSE(outcome) << "told before the call has returned";
  EXPECT_TRUE(eventually([&] {
    QCoreApplication::processEvents();
    return outcome.has_value();
  }));
  EXPECT_TRUE(outcome->has_value()) << outcome->error().sentence;
  std::string text;
  EXPECT_TRUE(eventually([&] { return bool(std::ifstream(mark) >> text); }));
  EXPECT_EQ(text, "1");

  pthread_sigmask(SIG_SETMASK, &mask, nullptr);  // children of later tests inherit it
  std::filesystem::remove(mark);
  for (const auto* variable : {markVariable, "GTEST_FILTER", "GTEST_REPEAT", "GTEST_BRIEF"})
    unsetenv(variable);
}

}  // namespace
}  // namespace pellow::desktop
