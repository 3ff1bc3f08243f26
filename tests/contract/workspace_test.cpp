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

class WorkspaceInUse : public DesktopContractTest {};

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
