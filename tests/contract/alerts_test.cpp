#include "platform/alerts.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class AlertsContract : public ContractTest {
 protected:
  Subscription show(const std::string& question) {
    return platform.alerts().show(
        {.messageText = question, .informativeText = "Nothing is lost.", .buttons = {"Yes", "No"}},
        [this, question](std::size_t button) {
          heard.push_back(question + " " + std::to_string(button));
        });
  }
};

TEST_F(AlertsContract, AnAnswerComesOnceAndLater) {
  auto alert = show("Shall it?");
  EXPECT_TRUE(hearsNothing());
  host->operate("No");
  EXPECT_TRUE(hears({"Shall it? 1"}));
  EXPECT_TRUE(hearsNothing());

  alert = show("Shall it go?");
  EXPECT_TRUE(hearsNothing());
  alert.cancel();
  alert = show("Shall it now?");
  EXPECT_TRUE(hearsNothing());
  host->operate("Yes");
  EXPECT_TRUE(hears({"Shall it now? 0"})) << "the one before was taken away";
}

TEST_F(AlertsContract, AnAnswerMayShowTheNext) {
  std::vector<Subscription> alerts;
  std::function<void(std::size_t)> next = [&](std::size_t button) {
    heard.push_back("button " + std::to_string(button));
    alerts.push_back(show("And now?"));
  };
  alerts.push_back(platform.alerts().show({.messageText = "First?", .buttons = {"Go on"}}, next));
  EXPECT_TRUE(hearsNothing());
  host->operate("Go on");
  EXPECT_TRUE(hears({"button 0"}));
  EXPECT_TRUE(hearsNothing());
  host->operate("No");
  EXPECT_TRUE(hears({"And now? 1"}));
}

class AlertsAmongApplications : public DesktopContractTest {};

TEST_F(AlertsAmongApplications, TheFirstButtonIsTheDefaultAndTheFormerApplicationComesBack) {
  const auto guest = host->launch("Guest");
  guest->open("Document", {300, 150, 400, 300});
  ASSERT_TRUE(bringToFront(*guest));
  const auto isGuest = [&] { return platform.workspace().frontmostApplication() == guest->pid(); };
  const auto alert = platform.alerts().show(
      {.messageText = "Shall it?", .buttons = {"Yes", "No"}},
      [this](std::size_t button) { heard.push_back(std::to_string(button)); });
  ASSERT_TRUE(until([&] { return !isGuest(); }));
  host->operate("Yes");
  EXPECT_TRUE(hears({"0"}));
  EXPECT_TRUE(until(isGuest));
}

}  // namespace
}  // namespace pellow::contract
