#include "platform/colour_panel.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class ColourPanelContract : public ContractTest {
 protected:
  std::function<void(Colour)> noteColour(const std::string& who) {
    return [this, who](Colour colour) {
      heard.push_back(who + (colour.red() > 0.5    ? " red"
                             : colour.blue() > 0.5 ? " blue"
                                                   : " other"));
    };
  }
};

TEST_F(ColourPanelContract, TheNewestAskerHearsWhatTheUserTries) {
  constexpr Colour red{1, 0, 0, 1};
  constexpr Colour blue{0, 0, 1, 1};
  auto first = platform.colourPanel().show(blue, noteColour("first"));
  EXPECT_TRUE(hearsNothing()) << "showing a colour is not trying one";
  host->pickColour(red);
  EXPECT_TRUE(hears({"first red"}));
  auto second = platform.colourPanel().show(red, noteColour("second"));
  host->pickColour(blue);
  EXPECT_TRUE(hears({"second blue"}));
  first.cancel();
  host->pickColour(red);
  EXPECT_TRUE(hears({"second red"}));
}

}  // namespace
}  // namespace pellow::contract
