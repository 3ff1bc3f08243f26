#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platforms/simulated/desktop.h"

namespace pellow {
namespace {

class UserDefaultsCoercion : public testing::Test {
 protected:
  const UserDefaults& holding(DefaultsValue value) {
    defaults.set("key", std::move(value));
    return defaults;
  }
  bool booleanOf(DefaultsValue value) { return boolean(holding(std::move(value)), "key"); }
  double numberOf(DefaultsValue value) { return number(holding(std::move(value)), "key"); }
  std::optional<std::string> textOf(DefaultsValue value) {
    return text(holding(std::move(value)), "key");
  }

  simulated::Desktop desktop;
  UserDefaults& defaults = desktop.userDefaults();
};

TEST_F(UserDefaultsCoercion, NothingStoredIsFalseZeroAndNothing) {
  EXPECT_FALSE(boolean(defaults, "absent"));
  EXPECT_EQ(number(defaults, "absent"), 0);
  EXPECT_EQ(text(defaults, "absent"), std::nullopt);
  EXPECT_EQ(data(defaults, "absent"), std::nullopt);
}

TEST_F(UserDefaultsCoercion, Booleans) {
  for (const auto truth : {"1", "YES", "yes", "y", "true", "T", " 7 apples", "-3", "+001", "10"})
    EXPECT_TRUE(booleanOf(truth)) << truth;
  for (const auto falsehood : {"", "0", "000", "no", "false", "off", "on", "0.5", "--1", " ", "x1"})
    EXPECT_FALSE(booleanOf(falsehood)) << falsehood;
  EXPECT_TRUE(booleanOf(0.25));
  EXPECT_FALSE(booleanOf(0.0));
  EXPECT_FALSE(booleanOf(DefaultsData{"1"}));
}

TEST_F(UserDefaultsCoercion, Numbers) {
  const std::vector<std::pair<const char*, double>> texts{{" 2.5pt", 2.5}, {"ten", 0}};
  for (const auto& [stored, expected] : texts) EXPECT_EQ(numberOf(stored), expected) << stored;
  EXPECT_EQ(numberOf(true), 1);
  EXPECT_EQ(numberOf(DefaultsData{"5"}), 0);
}

TEST_F(UserDefaultsCoercion, TextsAndData) {
  EXPECT_EQ(textOf(true), "1");
  EXPECT_EQ(textOf(false), "0");
  EXPECT_EQ(textOf(34.0), "34");
  EXPECT_EQ(textOf(0.32), "0.32");
  EXPECT_EQ(textOf(DefaultsData{"text"}), std::nullopt);
  EXPECT_EQ(data(holding(DefaultsData{"\xFFz"}), "key"), "\xFFz");
  EXPECT_EQ(data(holding("text"), "key"), std::nullopt);
}

}  // namespace
}  // namespace pellow
