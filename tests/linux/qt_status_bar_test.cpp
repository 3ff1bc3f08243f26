#include "platforms/linux/qt/qt_status_bar.h"

#include <QTimer>
#include <QToolTip>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <utility>
#include <vector>

#include "platforms/linux/qt/panel_tint.h"
#include "tests/linux/notifier_host.h"
#include "tests/linux/qt_desktop_test.h"
#include "tests/linux/tray.h"

namespace pellow::desktop {
namespace {

std::vector<pellow::PixelRect> noPanels() { return {}; }

class QtStatusBarTest : public QtDesktopTest {
 protected:
  bool untilTray(const std::function<bool()>& holds) {
    return until([&] {
      if (tray) tray->work();
      return holds();
    });
  }

  // The part's largest difference in brightness from the bar; negative if darker.
  int contrast(PixelRect part) {
    const auto picture = desktop.picture(part);
    const int ground = static_cast<int>(desktop.picture({0, 780, 1, 1}).at(0, 0) & 0xff);
    int most = 0;
    for (const auto pixel : picture.pixels) {
      const int difference = static_cast<int>(pixel & 0xff) - ground;
      if (std::abs(difference) > std::abs(most)) most = difference;
    }
    return most;
  }

  std::optional<Tray> tray;
};

TEST_F(QtStatusBarTest, TheItemAppearsInATrayThatComesLaterAndSuitsItsColour) {
  QtStatusBar bar(noPanels);
  auto item = bar.makeStatusItem();
  item->setImage({.symbol = "sidebar.trailing", .accessibilityDescription = "Pellow"});
  item->setMenu([&] { return Menu{{{.title = "Item", .onChosen = note("chosen")}}}; });
  work();
  EXPECT_FALSE(item->isShown());
  const auto whole = Tray::icon;
  tray.emplace(desktop.display(), 0xe8e8e8U);
  ASSERT_TRUE(untilTray([&] { return tray->docked() != 0; }));
  EXPECT_TRUE(item->isShown());
  EXPECT_TRUE(untilTray([&] { return contrast(whole) < -150; })) << contrast(whole);

  // The dot is 0.4 of the side, at the right edge; to its left there is nothing at the top.
  const PixelRect dot{whole.x + 17, whole.y + 2, 5, 5};
  const auto filled = [&] {
    int count = 0;
    const auto ground = desktop.picture({0, 780, 1, 1}).at(0, 0) & 0xff;
    for (const auto pixel : desktop.picture(dot).pixels) count += (pixel & 0xff) + 100 < ground;
    return count;
  };
  EXPECT_LT(filled(), 25);
  item->setImage({"sidebar.trailing", true, "Pellow"});
  EXPECT_TRUE(untilTray([&] { return filled() == 25; })) << filled();

  const auto menu = [&] { return shown("pellow-menu"); };
  desktop.click(whole.x + 12, whole.y + 12, 3);
  ASSERT_TRUE(untilTray([&] { return menu() != 0; })) << "the secondary button opens it, too";
  for (const auto press : {key::down, key::returnKey}) desktop.type({press});
  EXPECT_TRUE(untilTray([&] { return heard == std::vector<std::string>{"chosen"}; }));

  item->setTooltip("<b>Two</b> windows");
  desktop.movePointer(whole.x + 6, whole.y + 6);
  EXPECT_TRUE(untilTray([] { return QToolTip::isVisible(); }));
  EXPECT_EQ(QToolTip::text().toStdString(), "‹b›Two‹/b› windows");

  item.reset();
  EXPECT_TRUE(untilTray([&] { return !desktop.exists(tray->docked()); }));
}

TEST_F(QtStatusBarTest, TheItemIsLightOnADarkTray) {
  QtStatusBar bar(noPanels);
  const auto item = bar.makeStatusItem();
  item->setImage({.symbol = "sidebar.trailing", .accessibilityDescription = "Pellow"});
  work();
  tray.emplace(desktop.display(), 0x202020U);
  EXPECT_TRUE(untilTray([&] { return contrast(Tray::icon) > 150; })) << contrast(Tray::icon);

  // Another panel takes its place, and has its colour only later.
  tray.reset();
  work();
  EXPECT_FALSE(item->isShown());
  tray.emplace(desktop.display(), 0x202020U);
  EXPECT_TRUE(untilTray([&] { return contrast(Tray::icon) > 150; })) << contrast(Tray::icon);
  tray->paint(0xe8e8e8U);
  const PixelRect corner{Tray::icon.x, Tray::icon.y, 2, 2};
  EXPECT_TRUE(untilTray([&] { return contrast(Tray::icon) < -150 && contrast(corner) == 0; }))
      << contrast(Tray::icon) << " " << contrast(corner);
}

TEST_F(QtStatusBarTest, AHostGetsThePictureInAColourForMostOfThePanels) {
  const auto brightness = [&] {
    return tintOn({{Tray::bar.x, Tray::bar.y, Tray::bar.width, Tray::bar.height}})->lightness();
  };
  EXPECT_FALSE(tintOn({}));
  tray.emplace(desktop.display(), 0x202020U);
  EXPECT_TRUE(until([&] { return brightness() > 200; })) << brightness();
  tray->paint(0xe8e8e8U);
  EXPECT_TRUE(until([&] { return brightness() < 60; })) << brightness();
}

constexpr auto guestVariable = "PELLOW_TEST_STATUS_ITEM";

// Qt looks for a host only once in the life of a process: the item is in a process of its own,
// which runs this test alone.
TEST(QtStatusItem, IsAdoptedByTheHostThatComesAndByTheNextOne) {
  if (std::getenv(guestVariable)) {
    QtApplication application;
    QtStatusBar bar(noPanels);
    const auto item = bar.makeStatusItem();
    item->setImage({.symbol = "sidebar.trailing", .accessibilityDescription = "Pellow"});
    item->setTooltip("Two windows");
    item->setMenu([] { return Menu{{{.title = "Item"}}}; });
    for (int round = 0; round < 20; ++round) QCoreApplication::processEvents();
    const auto say = [](const char* line) {
      std::puts(line);
      std::fflush(stdout);
    };
    say("looked");
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&, wasShown = false]() mutable {
      if (std::exchange(wasShown, item->isShown()) != item->isShown())
        say(item->isShown() ? "shown" : "not shown");
    });
    timer.start(10);
    application.run();
    return;
  }
  DesktopSession desktop;
  const auto address = desktop.environment().at("DBUS_SESSION_BUS_ADDRESS");
  const auto bus = desktop.startSessionBus();
  const auto guest =
      desktop.start({"/proc/self/exe", "--gtest_filter=QtStatusItem.*", "--gtest_brief=1"},
                    {{guestVariable, "1"}});
  std::string said;
  while (said != "looked") {
    const auto line = guest->readLine();
    ASSERT_TRUE(line) << guest->standardError();
    said = *line;
  }

  int count = 1;
  char name[] = "host";
  char* arguments[] = {name, nullptr};
  const QCoreApplication application(count, arguments);
  NotifierHost host(address);
  const auto until = [&](const std::function<bool()>& holds) {
    return eventually([&] {
      QCoreApplication::processEvents();
      return holds();
    });
  };
  // The guest may still ask something.
  const auto hears = [&](const std::string& line) {
    auto told = std::async(std::launch::async, [&] { return guest->readLine(); });
    EXPECT_TRUE(
        until([&] { return told.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    return told.get() == line;
  };
  ASSERT_TRUE(host.startWatcher());
  ASSERT_TRUE(until([&] { return host.wasAsked(); }));
  host.startHost();
  ASSERT_TRUE(until([&] { return !host.items().empty(); })) << guest->standardError();
  EXPECT_TRUE(hears("shown"));
  EXPECT_EQ(host.property(host.items().front(), "Id").toString(), "pellow");
  const Tray tray(desktop.display(), 0x202020U);  // of another kind
  host.stop();
  EXPECT_TRUE(hears("not shown"));
  ASSERT_TRUE(host.startWatcher());
  host.startHost();
  EXPECT_TRUE(until([&] { return !host.items().empty(); })) << guest->standardError();
  EXPECT_TRUE(hears("shown"));
}

}  // namespace
}  // namespace pellow::desktop
