#include "platform/system_colours.h"

#include <vector>

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class SystemColoursContract : public ContractTest {};

TEST_F(SystemColoursContract, EveryPresetIsOpaqueAndUnlikeTheOthers) {
  using enum SystemColour;
  std::vector<std::string> seen;
  for (const auto preset : {red, orange, yellow, green, blue, purple, pink, grey}) {
    const auto colour = platform.systemColours().resolve(preset);
    EXPECT_EQ(colour.alpha(), 1);
    EXPECT_EQ(std::ranges::count(seen, colour.text()), 0) << colour.text();
    seen.push_back(colour.text());
  }
}

}  // namespace
}  // namespace pellow::contract
