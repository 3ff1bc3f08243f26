#include <fmt/format.h>

#include <fstream>
#include <iterator>
#include <thread>

#include "tests/harness/everyday.h"
// After it: X defines common words as macros.
#include "tests/desktop/session_manager.h"

// The program as a client of a session manager, which ends the session or does not.

namespace pellow::desktop {
namespace {

class Session : public Everyday {
 protected:
  // The session manager has seen that it joined.
  void join() {
    ASSERT_NO_FATAL_FAILURE(
        launch(nlohmann::json::object(), {{"SESSION_MANAGER", manager.address()}}));
    ASSERT_TRUE(eventually([&] { return manager.timesSaved() == 1; }));
  }

  void save(int type, bool endsSession) {
    const int before = manager.timesSaved();
    manager.askToSave(type, endsSession);
    ASSERT_TRUE(eventually([&] { return manager.timesSaved() > before; }));
  }

  // In ticks of the clock.
  long processorTime() {
    std::ifstream file(fmt::format("/proc/{}/stat", pellow->process().pid()));
    const std::vector<std::string> fields(std::istream_iterator<std::string>(file), {});
    return std::stol(fields.at(13)) + std::stol(fields.at(14));
  }

  SessionManager manager;
  TestClient client{desktop};
  const Guest guest = open(client, "Guest", {150, 120, 500, 300});
};

TEST_F(Session, EveryWindowIsBackBeforeTheSessionEnds) {
  ASSERT_NO_FATAL_FAILURE(join());
  EXPECT_EQ(manager.property(SmRestartStyleHint).substr(0, 1), std::string(1, SmRestartNever));
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));

  PixelRect frameWhenSaved;
  manager.onSaved = [&] { frameWhenSaved = desktop.frame(guest.window); };
  ASSERT_NO_FATAL_FAILURE(save(SmSaveBoth, true));
  EXPECT_EQ(frameWhenSaved, guest.home) << story(guest);
  EXPECT_TRUE(pellow->hasLogged("info The session is being saved; restoring pellowed windows"));
  EXPECT_EQ(manager.property(SmRestartStyleHint).substr(0, 1), std::string(1, SmRestartNever));

  // The user has thought better of it.
  manager.cancelShutdown();
  expectHome({guest});
  expectAllIsOver();
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  pellow->clickTab(0);
  expectHome({guest});
  expectAllIsOver();

  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  press('t');
  ASSERT_NO_FATAL_FAILURE(awaitAlert());
  ASSERT_NO_FATAL_FAILURE(save(SmSaveGlobal, true));
  manager.tellToDie();
  EXPECT_EQ(pellow->process().exitStatus(), 0) << pellow->process().standardError();
  expectHome({guest});
  EXPECT_TRUE(pellow->journal().empty());
}

TEST_F(Session, TheEndOfTheSessionManagerAloneEndsNothing) {
  ASSERT_NO_FATAL_FAILURE(join());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  manager.vanish();
  EXPECT_TRUE(eventually([&] {
    return pellow->hasLogged("default The session manager is gone; Pellow goes on without it");
  }));
  EXPECT_TRUE(eventually([&] {
    const long before = processorTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return processorTime() == before;
  })) << "nobody reads from the broken connection";
  pellow->clickTab(0);
  expectHome({guest});
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  end();
  expectHome({guest});
}

}  // namespace
}  // namespace pellow::desktop
