#include "platforms/linux/x11/desktop_entries.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace pellow::desktop {
namespace {

TEST(DesktopEntriesTest, FindTheApplicationOfAWindowClass) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(testing::TempDir()) / fmt::format("pellow-entries-{}", getpid());
  const auto write = [&](const std::string& name, const std::string& keys) {
    fs::create_directories((folder / name).parent_path());
    std::ofstream(folder / name) << "# made here\n[Desktop Entry]\nType=Application\n"
                                 << keys << "\n[Desktop Action new]\nName=New Window\n";
  };
  write("own/org.example.Editor.desktop",
        "Name=Editor\nName[de]=Schreiber\nName[de_AT]=Schreiberling\nIcon=editor");
  write("own/web.desktop", "Name = Web\nStartupWMClass=Surfer");
  write("own/helper.desktop", "Name=Helper\nStartupWMClass=Surfer\nNoDisplay=true");
  write("own/gone.desktop", "Name=Gone\nHidden=true");
  write("system/web.desktop", "Name=Shadowed\nStartupWMClass=Shadow");
  write("system/vendor/tool.desktop", "Name=Tool");

  DesktopEntries entries({folder / "own", folder / "system", folder / "missing"}, "de_DE.UTF-8");
  const auto find = [&](std::string_view instance, std::string_view windowClass) {
    const auto* entry = entries.find(instance, windowClass);
    return entry ? entry->id + "/" + entry->name : "none";
  };
  EXPECT_EQ(find("editor", "Editor"), "org.example.Editor/Schreiber");
  EXPECT_EQ(entries.find("", "org.example.editor")->icon, "editor");
  EXPECT_EQ(find("surfer", "Surfer"), "web/Web");
  EXPECT_EQ(find("", "Shadow"), "none");
  EXPECT_EQ(find("gone", "Gone"), "none");
  EXPECT_EQ(find("", "vendor-tool"), "vendor-tool/Tool");
  EXPECT_EQ(find("", ""), "none");

  // An application installed later.
  write("own/late.desktop", "Name=Late");
  fs::last_write_time(folder / "own", fs::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_EQ(find("late", "Late"), "late/Late");
  fs::remove_all(folder);
}

}  // namespace
}  // namespace pellow::desktop
