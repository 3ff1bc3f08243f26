#include <xcb/xinput.h>

#include <thread>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/linux/x11_desktop_test.h"

// What another client has grabbed.

namespace pellow::desktop {
namespace {

constexpr std::uint8_t t = 28;  // X key codes, the same in all of today's keyboard files
constexpr std::uint8_t r = 27;
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
  bool isReserved(std::uint16_t keyCode) const {
    return x11->symbolicHotKeys().isReserved(keyCode, flags);
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

TEST_F(GrabsTest, AskingTakesNothing) {
  // A window with the keyboard counts what reaches it.
  const auto window = xcb_generate_id(other->raw());
  const std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_KEY_PRESS};
  xcb_create_window(other->raw(), XCB_COPY_FROM_PARENT, window, other->root(), 0, 0, 9, 9, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                    XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
  xcb_map_window(other->raw(), window);
  xcb_set_input_focus(other->raw(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
  ASSERT_TRUE(other->check(xcb_no_operation_checked(other->raw()), deadlineIn(30)));

  constexpr int presses = 200;
  std::atomic<bool> isDone = false;
  std::jthread typing([&] {
    for (int press = 0; press < presses; ++press)
      desktop.type({key::control, key::alt, key::super, 't'});
    isDone = true;
  });
  int questions = 0;
  for (; !isDone; ++questions) EXPECT_FALSE(isReserved(17));
  EXPECT_GT(questions, presses / 10);

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
