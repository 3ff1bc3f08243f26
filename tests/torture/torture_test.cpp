#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/torture/torture.h"

namespace pellow::desktop {
namespace {

int numberIn(const char* variable, int otherwise) {
  const char* const text = std::getenv(variable);
  return text ? std::stoi(text) : otherwise;
}

// A short run, or as many kills as PELLOW_KILLS says.
TEST(Torture, NoKillLosesAWindow) {
  Torture torture(static_cast<unsigned>(numberIn("PELLOW_SEED", 1)), std::cerr);
  const auto& tally = torture.tally();
  while (tally.kills < numberIn("PELLOW_KILLS", 20)) torture.kill();
  std::cerr << tally.kills << " kills: " << tally.withWindowsAway << " with windows away, "
            << tally.halfDone << " with many windows half done\n";
  EXPECT_EQ(tally.lost, 0);
  EXPECT_EQ(tally.misplaced, 0);
  EXPECT_GT(tally.withWindowsAway, 0) << "the kills came at no bad moment";
}

}  // namespace
}  // namespace pellow::desktop
