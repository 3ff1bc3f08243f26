#include "platforms/linux/qt/desktop_appearance.h"

#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platforms/linux/qt/material.h"
#include "platforms/linux/qt/qt_panels.h"
#include "tests/linux/qt_desktop_test.h"
#include "tests/linux/settings_portal.h"

namespace pellow::desktop {
namespace {

// A panel of 200 by 100 points, the backdrop on its left and the accent on its right half.
std::unique_ptr<Panel> showPanel(QtPanels& panels) {
  View root{.key = "root", .frame = {0, 0, 200, 100}};
  root.children.push_back(
      {.key = "backdrop", .frame = {0, 0, 200, 100}, .look = {.content = Backdrop{}}});
  root.children.push_back({.key = "accent",
                           .frame = {100, 0, 100, 100},
                           .look = {.content = Fill{SystemColour::accent}}});
  auto panel = panels.makePanel("pellow-strip", WindowShadow::no);
  panel->setContent(root);
  panel->setFrame({100, 100, 200, 100});
  panel->orderFront();
  return panel;
}

QtPanels::Surroundings surroundings(const X11Desktop& x11) {
  return {.toPixels = [&x11](const AppKitRect& rect) { return x11.toPixels(rect); },
          .stretchesDocks = [] { return false; },
          .serverAnswers = [] { return true; }};
}

enum class Look { none, dark, light };

std::ostream& operator<<(std::ostream& out, Look look) {
  return out << (look == Look::none ? "none" : look == Look::dark ? "dark" : "light");
}

// Of the backdrop, which may let some of the ground shine through.
Look look(const DesktopSession& desktop) {
  if (desktop.shownWindows("pellow", "pellow-strip").empty()) return Look::none;
  const auto green = desktop.picture({150, 650, 1, 1}).at(0, 0) >> 8 & 0xff;
  return green < 90 ? Look::dark : green > 190 ? Look::light : Look::none;
}

// A file of the user's configuration.
std::filesystem::path write(const DesktopSession& desktop, const std::string& name,
                            const std::string& text) {
  const auto file = desktop.configHome() / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file) << text;
  return file;
}

class QtDesktopAppearanceTest : public QtDesktopTest {
 protected:
  void SetUp() override {}

  static bool isDark() { return Material::of(QApplication::palette(), false).isDark; }
};

TEST_F(QtDesktopAppearanceTest, PanelsFollowTheThemeThatIsAnnounced) {
  startQt(1);
  std::optional<QtPanels> panels;
  panels.emplace(queue, surroundings(*x11));
  auto panel = showPanel(*panels);
  const auto turns = [&](Look wanted) { return until([&] { return look(desktop) == wanted; }); };
  ASSERT_TRUE(turns(Look::light)) << look(desktop);

  const auto announce = [&](const std::string& theme) {
    return write(desktop, "announced", "Net/ThemeName \"" + theme + "\"\n");
  };
  const auto file = announce("Adwaita-dark");
  const auto daemon = desktop.start({"xsettingsd", "-c", file.string()});
  EXPECT_TRUE(turns(Look::dark)) << "a daemon that comes later";
  announce("Adwaita");
  daemon->send(SIGHUP);
  EXPECT_TRUE(turns(Look::light));
  announce("Mint-Y-Dark-Aqua");
  daemon->send(SIGHUP);
  EXPECT_TRUE(turns(Look::dark));

  panel.reset();
  panels.reset();
  x11.reset();
  application.reset();
  application.emplace();
  EXPECT_TRUE(isDark()) << "from the start";
}

TEST_F(QtDesktopAppearanceTest, WithoutADaemonTheSettingsOfGtkCount) {
  const std::string settings = "gtk-3.0/settings.ini";
  write(desktop, settings, "[Settings]\ngtk-theme-name = Yaru-dark\n");
  application.emplace();
  EXPECT_TRUE(isDark());
  application.reset();
  write(desktop, settings,
        "[Settings]\ngtk-theme-name=Darkly\ngtk-application-prefer-dark-theme=0\n");
  application.emplace();
  EXPECT_FALSE(isDark());
  application.reset();
  write(desktop, settings,
        "[Settings]\ngtk-theme-name=Adwaita\ngtk-application-prefer-dark-theme=1\n");
  application.emplace();
  EXPECT_TRUE(isDark());
}

constexpr auto guestVariable = "PELLOW_TEST_APPEARANCE";

// Qt looks only once in the life of a process which desktop this is.
TEST(QtColoursOfTheDesktop, Stay) {
  if (std::getenv(guestVariable)) {
    const QtApplication application;
    std::puts(QApplication::palette().color(QPalette::Window).name().toUtf8());
    return;
  }
  const DesktopSession desktop;
  write(desktop, "kdeglobals",
        "[Colors:Window]\nBackgroundNormal=250,240,230\nForegroundNormal=10,20,30\n"
        "[Colors:View]\nBackgroundNormal=255,255,255\n"
        "[Colors:Button]\nBackgroundNormal=240,240,240\n"
        "[Colors:Selection]\nBackgroundNormal=61,174,233\n");
  write(desktop, "gtk-3.0/settings.ini", "[Settings]\ngtk-application-prefer-dark-theme=1\n");
  const auto guest = desktop.start(
      {"/proc/self/exe", "--gtest_filter=QtColoursOfTheDesktop.*", "--gtest_brief=1"},
      {{guestVariable, "1"}, {"XDG_CURRENT_DESKTOP", "KDE"}, {"KDE_SESSION_VERSION", "5"}});
  std::optional<std::string> said;
  do said = guest->readLine();
  while (said && !said->starts_with('#'));
  EXPECT_EQ(said, "#faf0e6") << guest->standardError();
}

// Nor does it connect to the session bus more than once.
TEST(QtAppearancePortal, IsFollowedAndNeverWaitedFor) {
  if (std::getenv(guestVariable)) {
    QtApplication application;
    const Log log([](LogLevel, std::string_view) {});
    const auto x11 = X11Desktop::open("", DisplayScale::now(), {}, log).value();
    PollableMainQueue queue;
    const QSocketNotifier work(queue.fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(&work, &QSocketNotifier::activated, [&] { queue.runPending(); });
    QtPanels panels(queue, surroundings(*x11));
    const auto panel = showPanel(panels);
    application.run();
    return;
  }
  DesktopSession desktop;
  const auto address = desktop.environment().at("DBUS_SESSION_BUS_ADDRESS");
  const auto bus = desktop.startSessionBus();
  int count = 1;
  char name[] = "portal";
  char* arguments[] = {name, nullptr};
  const QCoreApplication application(count, arguments);
  SettingsPortal portal(address);
  const auto guest =
      desktop.start({"/proc/self/exe", "--gtest_filter=QtAppearancePortal.*", "--gtest_brief=1"},
                    {{guestVariable, "1"}});
  const auto until = [&](const std::function<bool()>& holds) {
    return eventually([&] {
      QCoreApplication::processEvents();
      return holds();
    });
  };
  ASSERT_TRUE(until([&] { return portal.wasAsked() && look(desktop) == Look::light; }))
      << guest->standardError();

  // In time only for those who did not wait.
  portal.answer(1, {0.8, 0.2, 0.4});
  EXPECT_TRUE(until([&] { return look(desktop) == Look::dark; })) << look(desktop);
  EXPECT_TRUE(until([&] { return desktop.picture({250, 650, 1, 1}).at(0, 0) == 0xcc3366; }));
  portal.change(2);
  EXPECT_TRUE(until([&] { return look(desktop) == Look::light; })) << look(desktop);
}

}  // namespace
}  // namespace pellow::desktop
