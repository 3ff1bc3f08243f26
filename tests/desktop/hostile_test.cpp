#include <cstdlib>
#include <iostream>

#include "tests/harness/everyday.h"

// Beside a client that means harm, and window managers that die.

namespace pellow::desktop {
namespace {

using std::chrono::seconds;

int numberIn(const char* variable, int otherwise) {
  const char* const text = std::getenv(variable);
  return text ? std::stoi(text) : otherwise;
}

class Hostile : public Everyday {
 protected:
  // Keys may meet another window, or none, or one of the alerts about others: a user would press
  // them again, and in the end put everything away.
  bool pressUntil(char letter, const Guest& guest) {
    const bool comes = letter == 'r';
    int tries = 0;
    return eventually(
        [&] {
          if (!desktop.windowManager().isRunning()) desktop.restartWindowManager();
          (void)eventually([&] { return !dismissAlert(); }, seconds(5));
          if (!comes) (void)desktop.activate(guest.window, seconds(1));
          press(!comes && ++tries > 3 ? 'a' : letter);
          return eventually([&] { return comes ? isHome(guest) : isAway(guest); }, seconds(2));
        },
        seconds(180));
  }
  bool dismissAlert() {
    if (alert() == 0) return false;
    desktop.type({key::escape});
    return true;
  }

  TestClient client{desktop};
};

// A short run, or as long as PELLOW_HOSTILE_SECONDS says.
TEST_F(Hostile, JunkOfOthersHarmsNobody) {
  const auto guest = open(client, "Guest", {150, 120, 500, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto hostile =
      desktop.start({PELLOW_HOSTILE_CLIENT, std::to_string(numberIn("PELLOW_SEED", 1))});
  const auto finish =
      std::chrono::steady_clock::now() + seconds(numberIn("PELLOW_HOSTILE_SECONDS", 8));
  int rounds = 0;
  do {
    ASSERT_TRUE(pressUntil(rounds % 4 == 1 ? 'a' : 't', guest)) << story(guest);
    if (rounds % 3 == 2) desktop.restartWindowManager();
    desktop.movePointer(200 + 37 * rounds % 800, 150 + 23 * rounds % 500);
    ASSERT_TRUE(pressUntil('r', guest)) << story(guest);
    ASSERT_TRUE(desktop.answersPing(pellow->strip())) << story(guest);
    ++rounds;
  } while (std::chrono::steady_clock::now() < finish);
  hostile->writeLine("report");
  std::cerr << rounds << " rounds beside " << hostile->readLine().value_or("nothing") << "\n";
  end();
  expectHome({guest});
}

}  // namespace
}  // namespace pellow::desktop
