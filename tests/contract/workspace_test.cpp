#include "platform/workspace.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class WorkspaceContract : public ContractTest {
 protected:
  Workspace& workspace = platform.workspace();
};

TEST_F(WorkspaceContract, ApplicationsComeAndGo) {
  std::vector<ProcessID> regular;
  std::vector<ProcessID> ended;
  const auto came = workspace.onDidBecomeRegular([&](ProcessID pid) { regular.push_back(pid); });
  const auto went =
      workspace.onDidTerminateApplication([&](ProcessID pid) { ended.push_back(pid); });
  auto guest = host->launch("Guest");
  guest->open("Document", {300, 150, 400, 300});
  const auto pid = guest->pid();
  EXPECT_TRUE(until([&] { return std::ranges::count(regular, pid) == 1; }));
  const auto running = workspace.runningApplications();
  const auto found = std::ranges::find(running, pid, &RunningApplication::pid);
  ASSERT_NE(found, running.end());
  EXPECT_EQ(found->activationPolicy, ActivationPolicy::regular);
  EXPECT_FALSE(found->localizedName.empty());
  EXPECT_EQ(workspace.application(pid)->localizedName, found->localizedName);

  guest.reset();
  EXPECT_TRUE(until([&] { return std::ranges::count(ended, pid) == 1; }));
  EXPECT_FALSE(workspace.application(pid));
  EXPECT_FALSE(workspace.hide(pid));
  EXPECT_FALSE(workspace.unhide(pid));
  EXPECT_FALSE(workspace.activate(pid));
}

TEST_F(WorkspaceContract, AHiddenApplicationShowsNoWindowUntilItIsShownAgain) {
  const auto guest = host->launch("Guest");
  guest->open("Document", {300, 150, 400, 300});
  const auto frame = guest->frame("Document");
  const auto isListed = [&] {
    const auto listed = workspace.windowsOnScreen();
    return std::ranges::count(listed, WindowOnScreen{guest->pid(), frame}) == 1;
  };
  EXPECT_TRUE(until(isListed));
  ASSERT_TRUE(until([&] { return workspace.application(guest->pid()).has_value(); }));
  ASSERT_TRUE(workspace.hide(guest->pid()));
  EXPECT_TRUE(until([&] { return !guest->isShown("Document"); }));
  EXPECT_TRUE(until([&] { return !isListed(); }));
  EXPECT_FALSE(guest->isMinimized("Document"));
  ASSERT_TRUE(workspace.unhide(guest->pid()));
  EXPECT_TRUE(until([&] { return guest->isShown("Document"); }));
  EXPECT_TRUE(until([&] { return guest->frame("Document") == frame; }));
  EXPECT_TRUE(until(isListed));
}

TEST_F(WorkspaceContract, WindowsOnTheScreenAreToldFrontToBack) {
  const auto guest = host->launch("Guest");
  const auto another = host->launch("Another");
  const std::vector<std::pair<Guest*, std::string>> opened{
      {guest.get(), "First"}, {another.get(), "Second"}, {guest.get(), "Third"}};
  double x = 300;
  for (const auto& [owner, title] : opened) owner->open(title, {x += 30, 150, 400, 300});
  const auto told = [&] {
    auto windows = workspace.windowsOnScreen();
    std::erase_if(windows, [&](const WindowOnScreen& window) {
      return window.owner != guest->pid() && window.owner != another->pid();
    });
    return windows;
  };
  EXPECT_TRUE(until([&] {
    return told() == std::vector<WindowOnScreen>{{guest->pid(), guest->frame("Third")},
                                                 {another->pid(), another->frame("Second")},
                                                 {guest->pid(), guest->frame("First")}};
  }));
  guest->minimize("Third");
  guest->close("First");
  EXPECT_TRUE(until([&] {
    return told() == std::vector<WindowOnScreen>{{another->pid(), another->frame("Second")}};
  }));
}

class WorkspaceInUse : public DesktopContractTest {};

TEST_F(WorkspaceInUse, TheDesktopTakesTheKeyboardUntilAWindowHasItAgain) {
  const auto guest = host->launch("Guest");
  guest->open("Document", {300, 150, 400, 300});
  ASSERT_TRUE(bringToFront(*guest));
  const auto hasGuest = [&] { return platform.workspace().frontmostApplication() == guest->pid(); };
  platform.workspace().activateDesktop();
  EXPECT_TRUE(until([&] { return !hasGuest(); }));
  EXPECT_TRUE(guest->isShown("Document"));
  // Keys are still heard there, whoever stands in for the desktop.
  const auto hear = [this](const KeyEvent& event) {
    heard.push_back(std::to_string(event.keyCode));
    return true;
  };
  const auto keys = platform.eventMonitors().addGlobalKeyDown(hear);
  const auto ownKeys = platform.eventMonitors().addLocalKeyDown(hear);
  ASSERT_TRUE(keys && ownKeys);
  host->type(key::t);
  EXPECT_TRUE(hears({"17"}));
  ASSERT_TRUE(bringToFront(*guest));
}

TEST_F(WorkspaceInUse, TheFrontmostApplicationIsToldOf) {
  const auto one = host->launch("One");
  const auto two = host->launch("Two");
  one->open("First", {300, 150, 400, 300});
  two->open("Second", {350, 200, 400, 300});
  ASSERT_TRUE(bringToFront(*two));
  std::vector<ProcessID> activated;
  const auto observer = platform.workspace().onDidActivateApplication(
      [&](ProcessID pid) { activated.push_back(pid); });
  ASSERT_TRUE(bringToFront(*one));
  EXPECT_TRUE(until([&] { return !activated.empty() && activated.back() == one->pid(); }));
  // The applications hear of it themselves, perhaps later.
  const auto isFront = [&](const Guest& guest) {
    return read<bool>(application(guest), AX::attribute::frontmost);
  };
  EXPECT_TRUE(until([&] { return isFront(*one) == true && isFront(*two) == false; }));

  ASSERT_TRUE(platform.workspace().hide(one->pid()));
  EXPECT_TRUE(until([&] { return read<bool>(application(*one), AX::attribute::hidden) == true; }));
  EXPECT_TRUE(until([&] { return platform.workspace().frontmostApplication() == two->pid(); }));
}

}  // namespace
}  // namespace pellow::contract
