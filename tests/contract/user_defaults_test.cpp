#include "platform/user_defaults.h"

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class UserDefaultsContract : public ContractTest {};

TEST_F(UserDefaultsContract, ValuesAreReadAsTheyWereWritten) {
  auto& defaults = platform.userDefaults();
  EXPECT_EQ(defaults.value("contract.unknown"), std::nullopt);
  const std::vector<DefaultsValue> values{true,
                                          1.0,
                                          0.1,
                                          -3.0,
                                          std::string("kurz — länger"),
                                          std::string(),
                                          DefaultsData{std::string("\0\xff{}", 4)},
                                          false};
  for (const auto kept : {Kept::eventually, Kept::atOnce}) {
    const std::string key = kept == Kept::atOnce ? "parkedWindows" : "contract.value";
    for (const auto& value : values) {
      ASSERT_TRUE(defaults.set(key, value, kept));
      EXPECT_EQ(defaults.value(key), value) << "value " << value.index();
    }
  }
}

TEST_F(UserDefaultsContract, ARegisteredValueStandsInForAStoredOne) {
  auto& defaults = platform.userDefaults();
  defaults.registerDefaults({{"contract.registered", 5.0}, {"contract.other", true}});
  EXPECT_EQ(defaults.value("contract.registered"), DefaultsValue(5.0));
  ASSERT_TRUE(defaults.set("contract.registered", std::string("6")));
  defaults.registerDefaults({{"contract.registered", 7.0}});
  EXPECT_EQ(defaults.value("contract.registered"), DefaultsValue("6"));
  EXPECT_EQ(number(defaults, "contract.registered"), 6);
  EXPECT_EQ(defaults.value("contract.other"), DefaultsValue(true)) << "registered before";
}

}  // namespace
}  // namespace pellow::contract
