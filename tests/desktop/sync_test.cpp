#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/harness/eventually.h"
#include "tests/harness/pellow_program.h"

// Two machines of one user, with a folder that somebody keeps alike on both.

namespace pellow::desktop {
namespace {

constexpr auto applied = "info Applied settings from the shared folder";

namespace fs = std::filesystem;
using nlohmann::json;

// A machine on which the shared folder is linked to where Pellow looks for it.
struct Machine {
  explicit Machine(const fs::path& shared) {
    const auto home = desktop.configHome().parent_path();
    fs::create_directories(home / "Library/Mobile Documents");
    fs::create_directory_symlink(shared, home / "Library/Mobile Documents/com~apple~CloudDocs");
  }

  // Whether tabs stay above other windows, as the user sets it.
  void toggle() { desktop.type({key::control, key::alt, key::super, 'f'}); }
  bool becomes(bool floats) const {
    return eventually([&] {
      std::ifstream file(desktop.configHome() / "pellow" / "defaults.json");
      const auto stored = file ? json::parse(file) : json::object();
      return stored.value("floatAboveWindows", true) == floats;
    });
  }

  DesktopSession desktop;
  PellowProgram pellow{desktop};
};

TEST(Sync, TwoMachinesWithOneFolderFollowEachOther) {
  const DesktopSession keeper({.windowManager = {}});  // has a folder that goes with it
  const auto shared = keeper.configHome() / "shared";
  const auto file = shared / "Pellow" / "settings.json";
  fs::create_directories(shared);
  Machine home(shared);
  ASSERT_TRUE(home.pellow.isReady());
  ASSERT_TRUE(eventually([&] { return fs::exists(file); }));
  Machine office(shared);  // its strip is another one once it has the zones of the file
  ASSERT_TRUE(eventually([&] { return office.pellow.hasLogged(applied); }));
  ASSERT_TRUE(office.pellow.isReady());

  home.toggle();
  EXPECT_TRUE(home.becomes(false));
  EXPECT_TRUE(office.becomes(false));
  EXPECT_EQ(office.pellow.timesLogged(applied), 2);
  office.toggle();
  EXPECT_TRUE(home.becomes(true));

  EXPECT_EQ(home.pellow.timesLogged(applied), 1);

  const auto bad = file.native() + ".bad";
  fs::remove(file);
  fs::create_directory(file);
  office.toggle();
  EXPECT_TRUE(home.becomes(false)) << "the next good file is taken";
  EXPECT_TRUE(fs::is_directory(bad)) << "what could not be read is kept";
}

}  // namespace
}  // namespace pellow::desktop
