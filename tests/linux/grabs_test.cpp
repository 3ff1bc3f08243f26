#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <atomic>
#include <thread>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/linux/x11_desktop_test.h"

// What another client has grabbed.

namespace pellow::desktop {
namespace {

constexpr std::uint8_t t = 28;  // X key codes, the same in all of today's keyboard files
constexpr std::uint8_t r = 27;
constexpr std::uint8_t controlKey = 37;
constexpr std::uint8_t altKey = 64;
constexpr std::uint8_t superKey = 133;
constexpr std::uint16_t chord = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
constexpr std::uint64_t flags = modifier::control | modifier::option | modifier::command;

class GrabsTest : public X11DesktopTest {
 protected:
  // As the shortcut of a desktop, of the old kind and of the new.
  void reserve(std::uint8_t keycode, std::uint16_t modifiers) {
    const auto grabbed = xcb_grab_key_checked(other->raw(), 0, other->root(), modifiers, keycode,
                                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    ASSERT_TRUE(other->check(grabbed, deadlineIn(30)));
  }
  void reserveByXInput(std::uint8_t keycode, std::uint32_t modifiers) {
    auto* const raw = other->raw();
    const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const auto grabbed =
        other
            ->pending<xcb_input_xi_passive_grab_device_reply_t>(xcb_input_xi_passive_grab_device(
                raw, XCB_CURRENT_TIME, other->root(), XCB_NONE, keycode,
                XCB_INPUT_DEVICE_ALL_MASTER, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER,
                &events, &modifiers))
            .collect(deadlineIn(30));
    ASSERT_TRUE(grabbed && (*grabbed)->num_modifiers == 0);
  }
  // A window above all others.
  WindowID coverScreen() { return cover(desktop.screen()); }
  WindowID cover(PixelRect place) {
    const auto window = xcb_generate_id(other->raw());
    const std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(other->raw(), XCB_COPY_FROM_PARENT, window, other->root(),
                      std::int16_t(place.x), std::int16_t(place.y), std::uint16_t(place.width),
                      std::uint16_t(place.height), 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                      values.data());
    EXPECT_TRUE(other->check(xcb_map_window_checked(other->raw(), window), deadlineIn(30)));
    return window;
  }
  void grabKeyboard(WindowID window) {
    auto pending = other->pending<xcb_grab_keyboard_reply_t>(
        xcb_grab_keyboard(other->raw(), 1, window, XCB_CURRENT_TIME, 1, 1));
    ASSERT_EQ((*pending.collect(deadlineIn(30)))->status, XCB_GRAB_STATUS_SUCCESS);
  }
  void grabPointer(WindowID window) {
    auto pending = other->pending<xcb_grab_pointer_reply_t>(
        xcb_grab_pointer(other->raw(), 1, window, 0, 1, 1, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME));
    ASSERT_EQ((*pending.collect(deadlineIn(30)))->status, XCB_GRAB_STATUS_SUCCESS);
  }
  void ungrab() {
    xcb_ungrab_pointer(other->raw(), XCB_CURRENT_TIME);
    EXPECT_TRUE(
        other->check(xcb_ungrab_keyboard_checked(other->raw(), XCB_CURRENT_TIME), deadlineIn(30)));
  }

  // Presses the keys one after another; what is heard of them while all are down.
  std::vector<std::uint16_t> heardOf(std::vector<std::uint8_t> keycodes) {
    std::vector<std::uint16_t> heard;
    const auto monitor = x11->eventMonitors().addGlobalKeyDown(
        [&](const KeyEvent& press) { heard.push_back(press.keyCode); });
    const auto send = [&](std::uint8_t type, std::uint8_t keycode) {
      EXPECT_TRUE(other->check(xcb_test_fake_input_checked(other->raw(), type, keycode,
                                                           XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0),
                               deadlineIn(30)));
      EXPECT_TRUE(x11->processEvents());
    };
    for (const auto keycode : keycodes) send(XCB_KEY_PRESS, keycode);
    for (const auto keycode : keycodes) send(XCB_KEY_RELEASE, keycode);
    return heard;
  }
  bool hearsShortcut() {
    return heardOf({superKey, controlKey, altKey, t}) == std::vector<std::uint16_t>{17};
  }

  bool isReserved(std::uint16_t keyCode) const {
    return x11->symbolicHotKeys().reservedBy(keyCode, flags).has_value();
  }

  std::unique_ptr<X11Connection> other = X11Connection::open(desktop.display()).value();
};

TEST_F(GrabsTest, AShortcutOfTheDesktopIsKnown) {
  for (const auto letter : std::initializer_list<std::uint16_t>{17, 15, 14, 3})
    EXPECT_FALSE(isReserved(letter));
  reserve(t, chord);
  EXPECT_TRUE(isReserved(17));
  reserve(r, chord | XCB_MOD_MASK_2);  // while Num Lock is on
  EXPECT_TRUE(isReserved(15));
  constexpr std::uint8_t e = 26;
  reserveByXInput(e, chord);
  EXPECT_TRUE(isReserved(14));
  constexpr std::uint8_t f = 41;
  reserve(f, XCB_MOD_MASK_4);
  EXPECT_FALSE(isReserved(3)) << "with other modifiers";
}

TEST_F(GrabsTest, WhoHasTheKeyboardKeepsItsKeys) {
  EXPECT_TRUE(hearsShortcut());
  reserve(t, XCB_MOD_MASK_CONTROL);  // something else
  const auto locker = coverScreen();
  for (const bool withPointer : {true, false}) {
    grabKeyboard(locker);
    if (withPointer) grabPointer(locker);
    EXPECT_FALSE(hearsShortcut());
    EXPECT_EQ(x11->screens().areLocked(), withPointer);
    ungrab();
    EXPECT_FALSE(x11->screens().areLocked());
    EXPECT_TRUE(hearsShortcut());
  }
}

// As a remote keyboard repeats it: nobody has let go of it.
TEST_F(GrabsTest, AKeyThatIsDownIsNotPressedAgain) {
  EXPECT_EQ(heardOf({t, r, t, t}), (std::vector<std::uint16_t>{17, 15}));
  EXPECT_EQ(heardOf({t}), std::vector<std::uint16_t>{17});
}

TEST_F(GrabsTest, AMenuIsNoLock) {
  const auto menu = cover({100, 100, 200, 300});
  desktop.movePointer(150, 150);
  grabKeyboard(menu);
  grabPointer(menu);
  EXPECT_FALSE(hearsShortcut());
  EXPECT_FALSE(x11->screens().areLocked());
}

// While it is down, a reserved key has the whole keyboard, too.
TEST_F(GrabsTest, AShortcutOfTheDesktopDoesNotHideOurs) {
  reserve(superKey, 0);  // opens a menu by itself
  EXPECT_TRUE(hearsShortcut());
  reserve(t, chord);
  EXPECT_TRUE(hearsShortcut());
  const auto locker = coverScreen();
  grabKeyboard(locker);
  grabPointer(locker);
  EXPECT_FALSE(hearsShortcut());
}

TEST_F(GrabsTest, AskingTakesNothing) {
  // A window with the keyboard counts what reaches it.
  xcb_set_input_focus(other->raw(), XCB_INPUT_FOCUS_PARENT, coverScreen(), XCB_CURRENT_TIME);
  ASSERT_TRUE(other->check(xcb_no_operation_checked(other->raw()), deadlineIn(30)));

  std::atomic<int> presses = 0;
  std::jthread typing([&](const std::stop_token& stop) {
    for (; !stop.stop_requested(); ++presses)
      desktop.type({key::control, key::alt, key::super, 't'});
  });
  for (int question = 0; question < 200 || presses == 0; ++question) EXPECT_FALSE(isReserved(17));
  typing = {};

  int reached = 0;
  const auto count = [&] {
    while (const auto event = other->pollForEvent()) {
      const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(*event);
      reached += (event->response_type & 0x7f) == XCB_KEY_PRESS && press.detail == t;
    }
    return reached == presses;
  };
  EXPECT_TRUE(eventually(count, std::chrono::seconds(5))) << reached;
  reserve(t, chord);  // nothing is left behind
}

}  // namespace
}  // namespace pellow::desktop
