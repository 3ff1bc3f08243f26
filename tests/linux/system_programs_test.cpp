#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include "platforms/linux/system/autostart_entry.h"
#include "platforms/linux/system/programs.h"
#include "platforms/linux/system/url_opener.h"
#include "tests/harness/eventually.h"

// Other programs: started by themselves, at login, or because they open a URL.

namespace pellow::desktop {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator(stream), {}};
}

class ProgramsTest : public testing::Test {
 protected:
  ~ProgramsTest() override {
    setenv("PATH", path_.c_str(), 1);
    for (const auto* name :
         {"XDG_CURRENT_DESKTOP", "PELLOW_REPLACED", "PELLOW_KEPT", "DESKTOP_STARTUP_ID"})
      unsetenv(name);
    fs::remove_all(folder);
  }

  // A shell script whose output appears, all at once, in the file `result`.
  fs::path install(const std::string& name, const std::string& script) const {
    const auto program = folder / name;
    std::ofstream(program) << "#!/bin/sh\n{ " << script << "\n} >" << result.native()
                           << ".part 2>&1\n/bin/mv " << result.native() << ".part "
                           << result.native() << "\n";
    fs::permissions(program, fs::perms::owner_all);
    return program;
  }
  std::string awaitResult() const {
    EXPECT_TRUE(eventually([&] { return fs::exists(result); }));
    const auto text = contents(result);
    fs::remove(result);
    return text;
  }

  const fs::path folder = makeFolder();
  const fs::path result = folder / "result";

 private:
  static fs::path makeFolder() {
    std::string pattern = fs::temp_directory_path() / "pellow-programs-XXXXXX";
    return mkdtemp(pattern.data());
  }

  const std::string path_ = std::getenv("PATH");
};

TEST_F(ProgramsTest, StartWithNothingOfOursButTheEnvironment) {
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto pipeBefore = std::signal(SIGPIPE, SIG_IGN);
  const int inherited = fcntl(STDIN_FILENO, F_DUPFD, 100);
  setenv("PELLOW_REPLACED", "old", 1);
  setenv("PELLOW_KEPT", "kept", 1);
  setenv("DESKTOP_STARTUP_ID", "of this process", 1);
  std::optional<GivenEnvironment> given(std::in_place);
  setenv("PELLOW_KEPT", "changed", 1);

  const auto program = install(
      "program", fmt::format("grep -E 'SigBlk|SigIgn' /proc/self/status\n"
                             "echo \"$1|$PELLOW_REPLACED|$PELLOW_KEPT|$DESKTOP_STARTUP_ID\"\n"
                             "test -e /proc/$$/fd/{} && echo inherited\n"
                             "test $(cut -d' ' -f6 /proc/$$/stat) = $$ && echo alone",
                             inherited));
  const auto started = startProgram({program, "two words; $HOME"}, ProgramOutput::discarded,
                                    {"PELLOW_REPLACED=new"});
  ASSERT_TRUE(started) << started.error().sentence;
  EXPECT_EQ(awaitResult(),
            "SigBlk:\t0000000000000000\n"
            "SigIgn:\t0000000000000000\n"
            "two words; $HOME|new|kept|\n"
            "alone\n");
  EXPECT_EQ(startProgram({folder / "nothing"}, ProgramOutput::shared).error().sentence,
            "Could not start " + (folder / "nothing").native() + ": No such file or directory.");
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "something is left to wait for";

  close(inherited);
  std::signal(SIGPIPE, pipeBefore);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(ProgramsTest, OpenURLs) {
  setenv("PATH", (folder.native() + ":relative").c_str(), 1);
  EXPECT_FALSE(openURL("https://example.org/"));
  install("xdg-open", "echo \"$#:$1\"");
  EXPECT_TRUE(openURL("https://example.org/?a=1&b=two words"));
  EXPECT_EQ(awaitResult(), "1:https://example.org/?a=1&b=two words\n");
  for (const auto* other : {"", "--help", "mailto:somebody", "/bin/sh", "xhttps://example.org"})
    EXPECT_FALSE(openURL(other)) << other;

  constexpr auto settings =
      "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";
  install("gnome-control-center", "echo GNOME");
  install("xfce4-settings-manager", "echo XFCE");
  struct Case {
    const char* desktop;
    std::string answer;
  };
  for (const auto& [desktop, answer] :
       {Case{"", ""}, Case{"KDE", ""}, Case{"ubuntu:GNOME", "GNOME\n"}, Case{"XFCE", "XFCE\n"}}) {
    setenv("XDG_CURRENT_DESKTOP", desktop, 1);
    EXPECT_EQ(openURL(settings), !answer.empty()) << desktop;
    if (!answer.empty()) EXPECT_EQ(awaitResult(), answer);
  }
}

TEST_F(ProgramsTest, AreStartedAtLoginWhileTheUserWantsIt) {
  const auto file = folder / "own" / "autostart" / "pellow.desktop";
  const auto shared = folder / "shared" / "autostart" / "pellow.desktop";
  AutostartEntry entry({folder / "own", folder / "shared"}, R"(/a "b" `c` $d 100% \e)");
  EXPECT_FALSE(entry.isEnabled());
  ASSERT_TRUE(entry.setEnabled(false));
  ASSERT_TRUE(entry.setEnabled(true));
  EXPECT_TRUE(entry.isEnabled());
  const auto written = contents(file);
  EXPECT_TRUE(written.starts_with("[Desktop Entry]\nType=Application\n")) << written;
  EXPECT_TRUE(written.contains(R"(
Exec="/a \\"b\\" \\`c\\` \\$d 100%% \\\\e"
TryExec=/a "b" `c` $d 100% \\e
)")) << written;

  // As desktops switch it off, and on again.
  for (const std::string off : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
    std::ofstream(file) << "[Desktop Entry]\nType=Application\nExec=pellow\n" << off << "\n";
    EXPECT_FALSE(entry.isEnabled()) << off;
    ASSERT_TRUE(entry.setEnabled(true));
    EXPECT_TRUE(entry.isEnabled());
  }
  ASSERT_TRUE(entry.setEnabled(false));
  EXPECT_FALSE(fs::exists(file));

  // A system-wide entry holds until the user says otherwise.
  fs::create_directories(shared.parent_path());
  std::ofstream(shared) << "[Desktop Entry]\nType=Application\nExec=pellow\n";
  EXPECT_TRUE(entry.isEnabled());
  for (const bool isWanted : {false, true}) {
    ASSERT_TRUE(entry.setEnabled(isWanted));
    EXPECT_EQ(entry.isEnabled(), isWanted);
  }

  fs::remove_all(folder / "own");
  std::ofstream(folder / "own") << "in the way";
  const auto sentence = entry.setEnabled(true).error().sentence;
  EXPECT_TRUE(sentence.starts_with("Could not write " + file.native())) << sentence;
}

}  // namespace
}  // namespace pellow::desktop
