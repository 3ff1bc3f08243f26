#include "platform/process.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class ProcessContract : public ContractTest {};

TEST_F(ProcessContract, EverySignalIsHandledAndIgnoredWhenNobodyWantsIt) {
  auto& process = platform.process();
  EXPECT_GT(process.pid(), 0);
  auto terminate = process.onSignal(TerminationSignal::terminate, note("terminate"));
  const auto interrupt = process.onSignal(TerminationSignal::interrupt, note("interrupt"));
  const auto hangUp = process.onSignal(TerminationSignal::hangUp, note("hang up"));
  EXPECT_TRUE(hearsNothing());  // a system may begin to listen only now
  for (int round = 0; round < 2; ++round) {
    host->send(TerminationSignal::terminate);
    EXPECT_TRUE(hears({"terminate"}));
  }
  terminate.cancel();
  host->send(TerminationSignal::terminate);
  host->send(TerminationSignal::interrupt);
  EXPECT_TRUE(hears({"interrupt"}));
  host->send(TerminationSignal::hangUp);
  EXPECT_TRUE(hears({"hang up"}));
}

}  // namespace
}  // namespace pellow::contract
