#include "platform/screens.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class ScreensContract : public ContractTest {};

TEST_F(ScreensContract, ThePrimaryScreenIsAtTheOriginAndTheMainOneIsAmongAll) {
  const auto all = platform.screens().all();
  ASSERT_FALSE(all.empty());
  EXPECT_EQ(all[0].frame.origin, AppKitPoint());
  for (const auto& screen : all) {
    const auto& frame = screen.frame;
    const auto& visible = screen.visibleFrame;
    EXPECT_GT(visible.area(), 0);
    EXPECT_GE(visible.minX(), frame.minX());
    EXPECT_GE(visible.minY(), frame.minY());
    EXPECT_LE(visible.maxX(), frame.maxX());
    EXPECT_LE(visible.maxY(), frame.maxY());
  }
  const auto main = platform.screens().main();
  ASSERT_TRUE(main);
  EXPECT_NE(std::ranges::find(all, *main), all.end());
}

}  // namespace
}  // namespace pellow::contract
