#include <gtest/gtest.h>

#include <sstream>

#include "tests/torture/torture.h"

namespace pellow::desktop {
namespace {

// A taste of it; the program `torture` goes on for as long as one likes.
TEST(Torture, NoKillLosesAWindow) {
  std::ostringstream report;
  Torture torture(/*seed=*/1, report);
  while (torture.tally().kills < 20) torture.kill();
  EXPECT_EQ(torture.tally().lost, 0) << report.str();
  EXPECT_EQ(torture.tally().misplaced, 0) << report.str();
  EXPECT_GT(torture.tally().withWindowsAway, 0) << "the kills came at no bad moment";
}

}  // namespace
}  // namespace pellow::desktop
