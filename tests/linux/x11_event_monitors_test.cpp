#include <fmt/format.h>

#include "tests/linux/painted_window.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

TEST_F(X11DesktopTest, KeysGoToOneChainOnly) {
  std::vector<std::string> heard;
  const auto global = x11->eventMonitors().addGlobalKeyDown([&](const KeyEvent& press) {
    heard.push_back(fmt::format("{} {:x} {}", press.keyCode, press.modifierFlags,
                                press.charactersIgnoringModifiers));
  });
  ASSERT_TRUE(global);
  desktop.type({key::control, key::alt, key::super, 't'});
  ASSERT_TRUE(until([&] { return heard.size() == 1; }));
  desktop.type({key::shift, 'k'});
  ASSERT_TRUE(until([&] { return heard.size() == 2; }));

  ownWindowHasKeyboard = true;
  desktop.type({'q'});
  auto older = x11->eventMonitors().addLocalKeyDown([&](const KeyEvent& press) {
    heard.push_back(fmt::format("older {}", press.keyCode));
    return true;
  });
  auto newer = x11->eventMonitors().addLocalKeyDown([&](const KeyEvent& press) {
    heard.push_back(fmt::format("newer {}", press.keyCode));
    return press.keyCode != 53;
  });
  constexpr std::uint8_t escape = 9;  // X key codes, the same in all of today's keyboard files
  constexpr std::uint8_t a = 38;
  EXPECT_TRUE(x11->deliverLocalKeyDown(a, 0));
  EXPECT_FALSE(x11->deliverLocalKeyDown(escape, 0));
  newer->cancel();
  EXPECT_TRUE(x11->deliverLocalKeyDown(escape, 0));

  ASSERT_TRUE(x11->processEvents());
  ownWindowHasKeyboard = false;
  desktop.type({'b'});
  ASSERT_TRUE(until([&] { return heard.back() == "11 0 b"; }));
  EXPECT_EQ(heard, (std::vector<std::string>{"17 1c0000 t", "40 20000 K", "newer 0", "older 0",
                                             "newer 53", "older 53", "11 0 b"}));
}

TEST_F(X11DesktopTest, PointerMovementsGoToOneChainOnly) {
  std::vector<std::string> heard;
  auto global = x11->eventMonitors().addGlobalPointerMoved([&] { heard.push_back("global"); });
  auto local = x11->eventMonitors().addLocalPointerMoved([&] { heard.push_back("local"); });
  ASSERT_TRUE(global && local);
  const PaintedWindow own(desktop, {300, 300, 100, 100}, {.isManaged = false});

  for (int x = 10; x < 200; x += 10) desktop.movePointer(x, 20);
  ASSERT_TRUE(until([&] { return !heard.empty(); }));
  EXPECT_EQ(heard.back(), "global");
  // Some of them may still be on their way to the first chain.
  desktop.movePointer(350, 350);
  ASSERT_TRUE(until([&] { return heard.back() == "local"; }));
  EXPECT_EQ(x11->eventMonitors().pointerLocation(), (AppKitPoint{350, 450}));
  const auto before = heard.size();
  desktop.movePointer(360, 350);
  ASSERT_TRUE(until([&] { return heard.size() > before; }));
  EXPECT_EQ(heard.back(), "local");

  global->cancel();
  local->cancel();
  int seen = 0;
  desktop.movePointer(20, 20);  // after this one nothing is listened to any more
  ASSERT_TRUE(x11->processEvents());
  heard.clear();
  auto later = x11->eventMonitors().addGlobalPointerMoved([&] { ++seen; });
  ASSERT_TRUE(later);
  desktop.movePointer(30, 20);
  ASSERT_TRUE(until([&] { return seen > 0; }));
  EXPECT_TRUE(heard.empty());
}

}  // namespace
}  // namespace pellow::desktop
