#include <chrono>

#include "platforms/linux/x11/x11_connection.h"
#include "platforms/linux/x11/xcb_xkb.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

class KeyboardTest : public X11DesktopTest {
 protected:
  static constexpr std::uint8_t y = 29;  // its X key code; German has Z there

  void useLayouts(const std::string& layouts) {
    ASSERT_EQ(desktop.start({"setxkbmap", "-layout", layouts})->exitStatus(), 0);
    ASSERT_TRUE(x11->processEvents());
  }
  void lockLayout(std::uint8_t group) {
    auto* const raw = user->raw();
    std::free(xcb_xkb_use_extension_reply(raw, xcb_xkb_use_extension(raw, 1, 0), nullptr));
    const auto locked =
        xcb_xkb_latch_lock_state_checked(raw, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
    ASSERT_TRUE(user->check(locked, deadlineIn(30)));
  }

  // What the key types for a window of this process, by layout.
  std::string typed(std::uint8_t keycode, unsigned layout, std::uint16_t modifiers = 0) {
    std::string characters;
    const auto monitor = x11->eventMonitors().addLocalKeyDown([&](const KeyEvent& press) {
      characters = press.charactersIgnoringModifiers;
      return true;
    });
    x11->deliverLocalKeyDown(keycode, static_cast<std::uint16_t>(modifiers | layout << 13));
    return characters;
  }

  std::unique_ptr<X11Connection> user = X11Connection::open(desktop.display()).value();
};

TEST_F(KeyboardTest, FollowsFourLayouts) {
  EXPECT_EQ(typed(y, 0), "y");
  useLayouts("us,gr,ru,de");
  std::string all;
  for (unsigned layout = 0; layout < 4; ++layout)
    all += typed(y, layout) + typed(y, layout, XCB_MOD_MASK_SHIFT);
  EXPECT_EQ(all, "yYυΥнНzZ");

  std::string heard;
  std::uint64_t flags = 0;
  const auto global = x11->eventMonitors().addGlobalKeyDown([&](const KeyEvent& press) {
    heard += press.charactersIgnoringModifiers;
    flags = press.modifierFlags;
  });
  for (const auto layout : std::initializer_list<std::uint8_t>{3, 1, 2}) {
    const auto before = heard.size();
    lockLayout(layout);
    desktop.type({'y'});
    ASSERT_TRUE(until([&] { return heard.size() > before; }));
  }
  desktop.type({key::shift, 'y'});
  ASSERT_TRUE(until([&] { return flags == modifier::shift; }));
  EXPECT_EQ(heard, "zυнН");
}

TEST_F(KeyboardTest, KeysWithoutLettersTypeWhatAppKitReports) {
  std::string all;
  // Escape, Backspace, Tab, Return, F1, F12, the keypad's 7 and Enter, Up, Delete.
  for (const auto keycode :
       std::initializer_list<std::uint8_t>{9, 22, 23, 36, 67, 96, 79, 104, 111, 119})
    all += typed(keycode, 0);
  EXPECT_EQ(all, "\x1b\x7f\t\r\uf704\uf70f7\x03\uf700\uf728");
}

// As long as another client has grabbed it, the old layouts stand.
TEST_F(KeyboardTest, DoesNotWaitForTheServer) {
  EXPECT_EQ(typed(y, 0), "y");
  useLayouts("de");
  const auto grabbed = xcb_grab_server_checked(user->raw());
  ASSERT_TRUE(user->check(grabbed, deadlineIn(30)));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(typed(y, 0), "y");
  EXPECT_LT(std::chrono::steady_clock::now() - start,
            std::chrono::duration<double>(serverPatience + 1));
  xcb_ungrab_server(user->raw());
  ASSERT_TRUE(user->isAnswered(deadlineIn(30)));
  EXPECT_EQ(typed(y, 0), "z");

  useLayouts("gr");
  xcb_grab_server(user->raw());
  ASSERT_TRUE(user->isAnswered(deadlineIn(30)));
  EXPECT_EQ(typed(y, 0), "z");
  x11.reset();  // while it still reads
}

}  // namespace
}  // namespace pellow::desktop
