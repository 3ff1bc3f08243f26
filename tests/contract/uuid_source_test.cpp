#include "platform/uuid_source.h"

#include <set>

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class UUIDSourceContract : public ContractTest {};

TEST_F(UUIDSourceContract, NoUUIDComesTwiceAndEachReadsBack) {
  std::set<std::string> texts;
  for (int count = 0; count < 1000; ++count) {
    const auto uuid = platform.uuidSource().next();
    EXPECT_EQ(UUID::parse(uuid.text()), uuid);
    texts.insert(uuid.text());
  }
  EXPECT_EQ(texts.size(), 1000u);
}

}  // namespace
}  // namespace pellow::contract
