#include "platform/form_windows.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class FormWindowsContract : public ContractTest {
 protected:
  Form form(bool isOn) {
    CheckBox box{"Show titles", isOn,
                 [this](bool on) { heard.push_back(on ? "titles on" : "titles off"); }};
    return {
        {{"General", {{"box", std::move(box)}, {"button", PushButton{"Reset", note("reset")}}}}}};
  }

  bool isShown() const { return window->isVisible(); }

  std::unique_ptr<FormWindow> window =
      platform.formWindows().makeWindow("pellow-settings", "Contract Settings");
};

TEST_F(FormWindowsContract, ItShowsWhenPresentedAndTheUserMayCloseAndPresentItAgain) {
  window->onClosed = note("closed");
  window->setForm(form(false));
  EXPECT_FALSE(isShown());
  for (int round = 0; round < 2; ++round) {
    window->present();
    ASSERT_TRUE(until([&] { return isShown(); }));
    host->closeWindow("Contract Settings");
    EXPECT_TRUE(hears({"closed"}));
    EXPECT_TRUE(until([&] { return !isShown(); }));
  }
}

TEST_F(FormWindowsContract, ControlsShowTheFormAndReportTheUser) {
  window->setForm(form(false));
  window->present();
  ASSERT_TRUE(until([&] { return isShown(); }));
  host->operate("Show titles");
  EXPECT_TRUE(hears({"titles on"}));
  host->operate("Show titles");
  EXPECT_TRUE(hears({"titles on"})) << "the form still says that they are off";
  window->setForm(form(true));
  host->operate("Show titles");
  EXPECT_TRUE(hears({"titles off"}));

  // A callback may change the form that it came from.
  auto growing = form(true);
  growing.panes[0].elements.push_back({"grow", PushButton{"Grow", [this] {
                                                            heard.push_back("grow");
                                                            window->setForm(form(false));
                                                          }}});
  window->setForm(std::move(growing));
  host->operate("Grow");
  EXPECT_TRUE(hears({"grow"}));
  host->operate("Reset");
  EXPECT_TRUE(hears({"reset"}));
}

}  // namespace
}  // namespace pellow::contract
