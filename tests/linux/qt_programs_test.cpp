#include <filesystem>
#include <fstream>
#include <iterator>

#include "platforms/linux/system/programs.h"
#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

class QtProgramsTest : public QtDesktopTest {
 protected:
  QtProgramsTest() {
    unsetenv("QT_XCB_GL_INTEGRATION");
    given.emplace();
  }

  std::optional<GivenEnvironment> given;
};

TEST_F(QtProgramsTest, FindTheEnvironmentThatTheProcessWasGiven) {
  ASSERT_NE(std::getenv("QT_XCB_GL_INTEGRATION"), nullptr) << "a secret of Qt's";
  const auto file = desktop.runtimeFolder() / "environment";
  const auto script = "env >\"$0.part\" && mv \"$0.part\" \"$0\"";
  ASSERT_TRUE(startProgram({"/bin/sh", "-c", script, file}, ProgramOutput::discarded));
  ASSERT_TRUE(eventually([&] { return std::filesystem::exists(file); }));
  std::ifstream stream(file);
  const std::string found(std::istreambuf_iterator(stream), {});
  EXPECT_TRUE(found.contains("DISPLAY=" + desktop.display() + "\n")) << found;
  EXPECT_FALSE(found.contains("QT_XCB_GL_INTEGRATION")) << found;
}

}  // namespace
}  // namespace pellow::desktop
