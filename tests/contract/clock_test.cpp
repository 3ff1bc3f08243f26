#include "platform/clock.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class ClockContract : public ContractTest {};

TEST_F(ClockContract, SleepTakesAsLongAsToldOnItsOwnClock) {
  auto& clock = platform.clock();
  const auto start = clock.now();
  clock.sleep(0.05);
  const auto end = clock.now();
  EXPECT_GE(end, start + 0.05);
  clock.sleep(0);
  EXPECT_GE(clock.now(), end);
}

}  // namespace
}  // namespace pellow::contract
