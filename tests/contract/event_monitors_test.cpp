#include "platform/event_monitors.h"

#include <fmt/format.h>

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class EventMonitorsContract : public DesktopContractTest {
 protected:
  EventMonitors& monitors = platform.eventMonitors();
};

TEST_F(EventMonitorsContract, KeysGoToOneChainOnlyAndTheNewestLocalMonitorIsFirst) {
  const auto guest = host->launch("Guest");
  guest->open("Document", {300, 150, 400, 300});
  ASSERT_TRUE(bringToFront(*guest));
  auto global = monitors.addGlobalKeyDown([this](const KeyEvent& event) {
    heard.push_back(
        fmt::format("global {} {:x}", event.keyCode, event.modifierFlags & modifier::all));
  });
  ASSERT_TRUE(global);
  host->type(key::t, modifier::control | modifier::option | modifier::command);
  EXPECT_TRUE(hears({"global 17 1c0000"}));
  host->type(key::k);
  EXPECT_TRUE(hears({"global 40 0"}));

  const auto older = monitors.addLocalKeyDown([this](const KeyEvent& event) {
    heard.push_back(fmt::format("older {}", event.keyCode));
    return true;
  });
  bool swallows = false;
  auto newer = monitors.addLocalKeyDown([&](const KeyEvent& event) {
    heard.push_back(fmt::format("newer {}", event.keyCode));
    return !swallows;
  });
  const auto window = platform.formWindows().makeWindow("pellow-settings", "Contract Settings");
  window->setForm({{{"General", {{"button", PushButton{"Reset", {}}}}}}});
  window->present();
  ASSERT_TRUE(until(
      [&] { return platform.workspace().frontmostApplication() == platform.process().pid(); }));
  host->type(key::t);
  EXPECT_TRUE(hears({"newer 17", "older 17"}));
  swallows = true;
  host->type(key::t);
  host->type(key::k);
  EXPECT_TRUE(hears({"newer 17", "newer 40"}));
  host->hold(key::t);
  EXPECT_TRUE(hears({"newer 17"})) << "held down it counts once";
  newer->cancel();
  host->hold(key::t);
  host->type(key::k);
  EXPECT_TRUE(hears({"older 17", "older 40"}));

  host->closeWindow("Contract Settings");
  ASSERT_TRUE(bringToFront(*guest));
  host->hold(key::t);
  host->type(key::k);
  EXPECT_TRUE(hears({"global 17 0", "global 40 0"}));
}

TEST_F(EventMonitorsContract, ThePointerIsFollowedOverPanelsAndOverEverythingElse) {
  const auto guest = host->launch("Guest");
  guest->open("Document", {300, 150, 400, 300});
  ASSERT_TRUE(bringToFront(*guest));
  const auto panel = platform.panels().makePanel("pellow-strip", WindowShadow::no);
  int clicks = 0;
  panel->setContent({.key = "root",
                     .frame = {0, 0, 100, 100},
                     .look = {.content = Backdrop{}},
                     .actions = {.onClick = [&] { ++clicks; }}});
  panel->setFrame({50, 200, 100, 100});
  panel->orderFront();
  ASSERT_TRUE(until([&] { return host->showsPanel("pellow-strip"); }));
  std::string last;
  auto global = monitors.addGlobalPointerMoved([&] { last = "global"; });
  auto local = monitors.addLocalPointerMoved([&] { last = "local"; });
  ASSERT_TRUE(global && local);
  const QuartzPoint overGuest{400, 350};
  const auto overPanel = toQuartz({100, 250});
  const auto tells = [&](QuartzPoint point, std::string_view chain) {
    host->movePointer({point.x + 1, point.y});
    if (!until([&] { return last == chain; })) return false;
    host->movePointer(point);
    return until([&] { return monitors.pointerLocation() == toAppKit(point); });
  };
  EXPECT_TRUE(tells(overGuest, "global"));
  EXPECT_TRUE(tells(overPanel, "local"));
  EXPECT_TRUE(tells(overGuest, "global"));

  const auto downs = monitors.addGlobalMouseDown([&] { last = "down elsewhere"; });
  ASSERT_TRUE(downs);
  const auto pressAt = [&](QuartzPoint point) {
    host->movePointer(point);
    host->pressButton();
    host->releaseButton();
  };
  pressAt(overPanel);
  ASSERT_TRUE(until([&] { return clicks == 1; }));
  EXPECT_NE(last, "down elsewhere");
  pressAt(overGuest);
  EXPECT_TRUE(until([&] { return last == "down elsewhere"; }));

  global->cancel();
  last.clear();
  host->movePointer({410, 360});
  EXPECT_TRUE(tells(overPanel, "local")) << "what was before it has been heard by nobody";
}

}  // namespace
}  // namespace pellow::contract
