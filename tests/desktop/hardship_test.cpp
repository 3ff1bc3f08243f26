#include <atomic>
#include <fstream>
#include <thread>

#include "tests/desktop/window_managers_test.h"

// A desktop on which everything happens at once, or nothing at all; and the file that outlives it.

namespace pellow::desktop {
namespace {

using Hardship = WindowManagers;

TEST_F(Hardship, WindowsThatComeAndGoDoNotDisturbTheOthers) {
  const auto guest = open(client, "Guest", {150, 120, 500, 300});
  TestClient first(desktop, "First");
  TestClient second(desktop, "Second");
  ASSERT_NO_FATAL_FAILURE(launch());
  first.storm(60);
  second.storm(60);
  for (int round = 0; round < 30; ++round) {
    press('t');
    if (round % 5 == 0) press('r');
  }
  first.awaitCalm();
  second.awaitCalm();
  // Some presses may have met no window, each with an alert still to come.
  end();
  expectHome({guest});
  EXPECT_TRUE(pellow->journal().empty());

  ASSERT_NO_FATAL_FAILURE(launch());
  // Another client grabs the server on the way out and on the way back.
  ASSERT_TRUE(desktop.activate(guest.window));
  press('t');
  ASSERT_TRUE(eventually([&] { return pellow->journal().size() == 1; }));
  first.grabServer(2000);
  EXPECT_TRUE(hasTabs(1));
  expectAway({guest});
  pellow->clickTab(0);
  first.grabServer(2000);
  expectHome({guest});
  expectAllIsOver();
}

TEST_F(Hardship, ALostServerEndsTheProgramWithASentence) {
  const auto guest = open(client, "Guest", {150, 120, 500, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  desktop.killServer();
  EXPECT_EQ(pellow->process().exitStatus(), 1);
  const auto said = pellow->process().standardError();
  EXPECT_TRUE(said.contains("connection")) << said;
  EXPECT_EQ(pellow->journal().size(), 1u);
}

TEST_F(Hardship, TheJournalIsWholeAndAheadOfTheWindows) {
  const auto guest = open(client, "Guest", {150, 120, 500, 300});
  ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", "offscreen"}}));
  std::atomic<int> read = 0;
  std::atomic<int> halfWritten = 0;
  std::jthread reader([&, file = PellowProgram::journalFile(desktop)](std::stop_token stop) {
    while (!stop.stop_requested()) {
      std::ifstream stream(file);
      if (!stream) continue;  // written when the first window goes
      const std::string text(std::istreambuf_iterator<char>(stream), {});
      if (!nlohmann::json::parse(text, nullptr, false).is_object()) ++halfWritten;
      ++read;
    }
  });
  for (int round = 0; round < 20; ++round) {
    ASSERT_TRUE(desktop.activate(guest.window));
    press('t');
    // Without a pause: a record written after the move would not be there yet.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (desktop.frame(guest.window) == guest.home)
      ASSERT_LT(std::chrono::steady_clock::now(), end) << story(guest);
    ASSERT_EQ(pellow->journal().size(), 1u) << "round " << round;
    ASSERT_TRUE(hasTabs(1));
    pellow->clickTab(0);
    expectHome({guest});
    expectAllIsOver();
  }
  reader.request_stop();
  reader.join();
  EXPECT_EQ(halfWritten, 0);
  EXPECT_GT(read, 20);
}

}  // namespace
}  // namespace pellow::desktop
