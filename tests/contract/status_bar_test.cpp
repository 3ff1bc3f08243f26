#include "platform/status_bar.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class StatusBarContract : public ContractTest {};

TEST_F(StatusBarContract, TheMenuIsAskedForEachTimeItOpens) {
  const auto item = platform.statusBar().makeStatusItem();
  item->setImage({.symbol = "sidebar.trailing", .accessibilityDescription = "Pellow"});
  int asked = 0;
  item->setMenu([&] {
    const auto number = std::to_string(++asked);
    return Menu{{{.title = "Heading"},
                 {.isSeparator = true},
                 {.title = "Item " + number, .onChosen = note("chosen " + number)}}};
  });
  EXPECT_TRUE(hearsNothing());
  EXPECT_EQ(asked, 0);
  EXPECT_TRUE(host->until([&] { return item->isShown(); }));
  host->chooseFromStatusMenu("Item 1");
  EXPECT_TRUE(hears({"chosen 1"}));
  item->setImage(
      {.symbol = "sidebar.trailing", .isBadged = true, .accessibilityDescription = "Pellow"});
  host->chooseFromStatusMenu("Item 2");
  EXPECT_TRUE(hears({"chosen 2"}));
}

}  // namespace
}  // namespace pellow::contract
