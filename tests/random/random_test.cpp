#include <gtest/gtest.h>

#include <string>

#include "platforms/simulated/desktop.h"
#include "tests/random/history.h"
#include "tests/random/runner.h"
#include "tests/random/sightings.h"

namespace pellow::random {
namespace {

// A short run of what `random_histories` does for hours.
TEST(RandomHistories, BreakNoPromise) {
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    const auto history = generate(seed);
    const auto outcome = playApart(history);
    if (outcome.promise) FAIL() << tell(history, outcome);
  }
}

// Histories that once broke a promise, as short as they could be made.
TEST(RandomHistories, StayMended) {
  for (const auto* mended : {
           "seed 4580; launch 1; launch; open 1; manners 0 1 201; start; press; run; open 1; press;"
           "crash-in 40; settle; tab; press; open; settle; quit-application 1; start; crash-in;"
           "run; start; settle",
           "seed 27344; launch; open; prefer 0 2; start; open @1; press; settle; tab; press; "
           "settle",
           "seed 40208; launch; open; open; prefer 0 2; start; press; run 17; choose; tab; press;"
           "quiet",
           "seed 712; launch; open; open; prefer 0 2; start; press 2; run; press; run; hang; quit;"
           "run",
           "seed 15137; launch; open; open; start; press 1; run; crash; delays 276; start; press 1;"
           "settle",
           "seed 22422; plug 1; launch; open 0 0 520; manners 0 1; start; press; run 50; resize;"
           "unplug; quiet",
           "seed 44312; launch; open; open; start; press 1; run; manners 0 1 201; crash; start;"
           "press 1; quiet",
           "seed 10872; launch 1; launch; open; open 1; manners 0 1 201; manners 1 2; start; press "
           "1;"
           "run 4245; run 271; press 1; run 313; run 166; run 83; run 219; run 263; run 206; run "
           "238;"
           "quit; run",
           "seed 6956; launch; open; open; prefer 0 2; start; run; minimize; settle; press 3; "
           "press 1;"
           "quiet",
           "seed 1; launch; open; start; press; quiet; drag; dock; run 100",
       }) {
    const auto history = parse(mended);
    ASSERT_TRUE(history) << mended;
    const auto outcome = playApart(*history);
    EXPECT_FALSE(outcome.promise) << tell(*history, outcome);
  }
}

TEST(RandomHistories, AreTheSameEveryTime) {
  for (std::uint64_t seed = 101; seed <= 110; ++seed) {
    const auto history = generate(seed);
    const auto once = playApart(history, Record::everything);
    const auto twice = playApart(history, Record::everything);
    ASSERT_GT(once.portCalls.size(), 10);
    EXPECT_EQ(once.story, twice.story) << seed;
    EXPECT_EQ(once.portCalls, twice.portCalls) << seed;
  }
}

TEST(RandomHistories, AreReadAsTheyArePrinted) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const auto history = generate(seed);
    EXPECT_EQ(parse(text(history)), history);
  }
  EXPECT_EQ(parse("seed 3 # a remark\n\n press 0 12 @40;start"),
            (History{3, {{Verb::press, {0, 12}, 40}, {Verb::start}}}));
  for (const auto* nonsense : {"fly", "press x", "press 1 2 3 4", "press @", "seed", "run -1"})
    EXPECT_FALSE(parse(nonsense)) << nonsense;
}

// Who did it decides whether the program owes a window its tab.
TEST(RandomHistories, TellTheProgramsDoingFromOthers) {
  simulated::Desktop desktop;
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto list = notes.openWindow("Shopping", {100, 100, 800, 600});
  Sightings sightings;
  const auto look = [&](Doer doer) {
    sightings.look(desktop.state(), desktop.now(), doer, [](auto) { return false; });
    return sightings.window(list.id())->isHiddenByProgram();
  };
  EXPECT_FALSE(look(Doer::others));
  list.minimize();
  EXPECT_FALSE(look(Doer::others));
  EXPECT_FALSE(look(Doer::program));
  list.unminimize();
  look(Doer::others);
  list.minimize();
  EXPECT_TRUE(look(Doer::program));
  list.unminimize();
  list.moveTo({1439, 872});
  EXPECT_TRUE(look(Doer::program));
  list.moveTo({1439, 700});
  EXPECT_FALSE(look(Doer::others));
  EXPECT_FALSE(sightings.misdeed());
  list.resize({10, 10});
  look(Doer::program);
  EXPECT_TRUE(sightings.misdeed());
}

}  // namespace
}  // namespace pellow::random
