#include "platforms/linux/qt/qt_status_bar.h"

#include <fmt/format.h>
#include <xcb/xcb.h>

#include <vector>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

// A bar at the bottom of the screen with the smallest tray there can be: one place for an icon.
class Tray {
 public:
  static constexpr PixelRect bar{0, 760, 1280, 40};
  static constexpr PixelRect icon{1200, 768, 24, 24};

  Tray(const std::string& display, std::uint32_t colour)
      : connection_(X11Connection::open(display).value()), window_(xcb_generate_id(raw())) {
    const std::uint32_t values[] = {colour, 1};
    xcb_create_window(raw(), XCB_COPY_FROM_PARENT, window_, connection_->root(), bar.x, bar.y,
                      bar.width, bar.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(raw(), window_);
    const auto selection = internAtom(raw(), "_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(raw(), window_, selection, XCB_CURRENT_TIME);
    tell(connection_->root(), "MANAGER", {.data32 = {0, selection, window_}},
         XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    connection_->flush();
  }

  // Docks whatever icon asks.
  void work() {
    while (auto* const event = xcb_poll_for_event(raw())) {
      const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> owner(event, std::free);
      if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE) continue;
      const auto& message = *reinterpret_cast<const xcb_client_message_event_t*>(event);
      if (message.type != internAtom(raw(), "_NET_SYSTEM_TRAY_OPCODE")) continue;
      docked_ = message.data.data32[2];
      const std::uint32_t size[] = {icon.width, icon.height};
      xcb_configure_window(raw(), docked_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                           size);
      xcb_reparent_window(raw(), docked_, window_, icon.x - bar.x, icon.y - bar.y);
      xcb_map_window(raw(), docked_);
      tell(docked_, "_XEMBED", {.data32 = {0, 0, 0, window_}}, XCB_EVENT_MASK_NO_EVENT);
      connection_->flush();
    }
  }

  WindowID docked() const { return docked_; }

 private:
  xcb_connection_t* raw() const { return connection_->raw(); }

  void tell(xcb_window_t window, const char* type, xcb_client_message_data_t data,
            std::uint32_t mask) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = internAtom(raw(), type);
    message.data = data;
    xcb_send_event(raw(), 0, window, mask, reinterpret_cast<const char*>(&message));
  }

  std::unique_ptr<X11Connection> connection_;
  xcb_window_t window_;
  WindowID docked_ = 0;
};

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
  QtStatusBar bar;
  int asked = 0;
  std::vector<std::string> chosen;
  auto item = bar.makeStatusItem();
  item->setImage({.symbol = "sidebar.trailing", .accessibilityDescription = "Pellow"});
  item->setMenu([&] {
    const auto title = fmt::format("Item {}", ++asked);
    return Menu{{{.title = title, .onChosen = [&, title] { chosen.push_back(title); }}}};
  });
  work();
  EXPECT_EQ(asked, 0);
  const auto whole = Tray::icon;
  tray.emplace(desktop.display(), 0xe8e8e8U);
  ASSERT_TRUE(untilTray([&] { return tray->docked() != 0; }));
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
  for (const auto button : {std::uint8_t{1}, std::uint8_t{3}}) {
    const int before = asked;
    desktop.click(whole.x + 12, whole.y + 12, button);
    ASSERT_TRUE(untilTray([&] { return menu() != 0; })) << "button " << int{button};
    EXPECT_EQ(asked, before + 1);
    desktop.type({key::down});
    desktop.type({key::returnKey});
    ASSERT_TRUE(untilTray([&] { return menu() == 0 && !chosen.empty(); }));
    EXPECT_EQ(chosen, (std::vector{fmt::format("Item {}", asked)}));
    chosen.clear();
  }

  item.reset();
  EXPECT_TRUE(untilTray([&] { return !desktop.exists(tray->docked()); }));
}

TEST_F(QtStatusBarTest, TheItemIsLightOnADarkTray) {
  QtStatusBar bar;
  const auto item = bar.makeStatusItem();
  item->setImage({.symbol = "sidebar.trailing", .accessibilityDescription = "Pellow"});
  work();
  tray.emplace(desktop.display(), 0x202020U);
  EXPECT_TRUE(untilTray([&] { return contrast(Tray::icon) > 150; })) << contrast(Tray::icon);
}

}  // namespace
}  // namespace pellow::desktop
