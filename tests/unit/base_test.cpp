#include <cmath>
#include <coroutine>
#include <limits>
#include <locale>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "base/colour.h"
#include "base/function.h"
#include "base/geometry.h"
#include "base/handler_list.h"
#include "base/json.h"
#include "base/notification_center.h"
#include "base/number.h"
#include "base/task.h"
#include "base/unicode.h"
#include "base/uuid.h"

namespace pellow {
namespace {

TEST(UUIDText, IsReadInEitherCaseAndPrintedInUpperCase) {
  const auto uuid = UUID::parse("6ba7b810-9dad-11D1-80B4-00c04fd430c8");
  ASSERT_TRUE(uuid);
  EXPECT_EQ(uuid->text(), "6BA7B810-9DAD-11D1-80B4-00C04FD430C8");
  for (const auto text :
       {"", "6BA7B810-9DAD-11D1-80B4-00C04FD430C", "6BA7B810-9DAD-11D1-80B4-00C04FD430C80",
        "6BA7B81009DAD-11D1-80B4-00C04FD430C8", "6BA7B810-9DAD-11D1-80B4-00C04FD430CG",
        "{6BA7B810-9DAD-11D1-80B4-00C04FD430C}", "6BA7B8109DAD-11D1-80B4-00C04FD4-30C8"})
    EXPECT_EQ(UUID::parse(text), std::nullopt) << text;
}

TEST(ColourText, ReadsSixDigitsWithOrWithoutTheSign) {
  const auto colour = Colour::parse("#1a2B3c");
  ASSERT_TRUE(colour);
  EXPECT_EQ(*colour, (Colour{0x1A / 255.0, 0x2B / 255.0, 0x3C / 255.0, 1}));
  EXPECT_EQ(Colour::parse("1A2B3C"), colour);
  EXPECT_EQ(Colour::parse("+A2B3C"), Colour::parse("#0A2B3C"));
  EXPECT_EQ(Colour::parse("#+A2B3C"), Colour::parse("#0A2B3C"));
  for (const auto text : {"", "#", "#1A2B3", "#1A2B3C4D", "##1A2B3", "#-A2B3C", "# A2B3C",
                          "#1A2B3G", "#++2B3C", "#0x1A2"})
    EXPECT_EQ(Colour::parse(text), std::nullopt) << text;

  for (unsigned value = 0; value < 256; ++value) {
    const auto text = fmt::format("#{:02X}{:02X}{:02X}", value, 255 - value, value);
    EXPECT_EQ(Colour::parse(text)->text(), text);
  }
  EXPECT_EQ((Colour{0.999, 0.5, 0, 0}).text(), "#FE7F00") << "truncated, not rounded";
  EXPECT_EQ(Colour(1.5, -0.2, std::nan(""), 2), Colour(1, 0, 0, 1));
}

TEST(Geometry, TilesShareNoPointAndFlippingTwiceChangesNothing) {
  const QuartzRect left(0, 0, 100, 50), right(100, 0, 100, 50);
  EXPECT_TRUE(right.contains({100, 0}));
  EXPECT_FALSE(left.contains({100, 0}));
  EXPECT_FALSE(left.contains({0, 50}));
  EXPECT_EQ(left.intersectionArea(right), 0);
  EXPECT_EQ(left.intersectionArea({90, 40, 100, 100}), 100);
  EXPECT_EQ(left.intersectionArea({300, 300, 10, 10}), 0) << "apart on both axes";

  const Flip flip{900};
  EXPECT_EQ(flip.toAppKit(QuartzRect(10, 20, 30, 40)), AppKitRect(10, 840, 30, 40));
  EXPECT_EQ(flip.toQuartz(flip.toAppKit(left)), left);
}

TEST(Unicode, TakesTheFirstCharacterOfATextThatIsUTF8) {
  EXPECT_EQ(firstScalar("ab"), U'a');
  EXPECT_EQ(firstScalar("éa"), U'é');
  EXPECT_EQ(firstScalar("€"), U'€');
  EXPECT_EQ(firstScalar("😀"), U'😀');
  for (const std::string_view text :
       {"", "\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF", "\xE2\x82"})
    EXPECT_EQ(firstScalar(text), std::nullopt);
}

TEST(Unicode, ChangesTheCaseOfLettersAndOfNothingElse) {
  const std::vector<std::pair<std::string, std::string>> pairs{{"abcxyz 1÷[{@`", "ABCXYZ 1÷[{@`"},
                                                               {"àöøþÿ", "ÀÖØÞŸ"},
                                                               {"āįĳķĺňŋŷźž", "ĀĮĲĶĹŇŊŶŹŽ"},
                                                               {"άέήίόύώαρσω", "ΆΈΉΊΌΎΏΑΡΣΩ"},
                                                               {"ёђаяґӂқ", "ЁЂАЯҐӁҚ"},
                                                               {"աֆ", "ԱՖ"},
                                                               {"șțơưạ", "ȘȚƠƯẠ"},
                                                               {"⌘→日😀", "⌘→日😀"}};
  for (const auto& [lower, upper] : pairs) {
    EXPECT_EQ(upperCased(lower), upper);
    EXPECT_EQ(lowerCased(upper), lower);
    EXPECT_EQ(upperCased(upper), upper);
    EXPECT_EQ(lowerCased(lower), lower);
  }
  EXPECT_EQ(upperCased("ßıς"), "SSIΣ");
  EXPECT_EQ(lowerCased("İ"), "i\u0307");
  EXPECT_EQ(upperCased("a\xFFz\xC3"), "A\xFFZ\xC3");
}

TEST(JSON, ReadsStrictly) {
  using Numbers = std::vector<double>;
  EXPECT_EQ(decodeJSON<Numbers>("[1, 2.5]"), (Numbers{1, 2.5}));
  for (const auto text : {"", "[1,", "[true]", "[\"1\"]", "[null]", "\xFF", "{\"a\": 1"})
    EXPECT_EQ(decodeJSON<Numbers>(text), std::nullopt) << text;
  EXPECT_EQ(decodeJSON<UUID>("\"not one\""), std::nullopt);

  const auto number = [](const char* text) -> std::optional<std::uint16_t> {
    try {
      return readJSON<std::uint16_t>(nlohmann::json::parse(text));
    } catch (const JSONError&) {
      return std::nullopt;
    }
  };
  EXPECT_EQ(number("65535"), 65535);
  EXPECT_EQ(number("65535.0"), 65535);
  for (const auto text :
       {"65536", "-1", "-1.0", "1.5", "1e300", "true", "\"1\"", "null", "65536.0"})
    EXPECT_EQ(number(text), std::nullopt) << text;
}

TEST(JSON, WritesNothingThatItCouldNotReadAgain) {
  EXPECT_EQ(encodeJSON({{"a", 1.5}}), R"({"a":1.5})");
  EXPECT_EQ(encodeJSON({{"a", {1, std::numeric_limits<double>::infinity()}}}), std::nullopt);
  EXPECT_EQ(encodeJSON({{"a", std::nan("")}}), std::nullopt);
  EXPECT_EQ(encodeJSON({{"a", "\xFF"}}), std::nullopt);
}

TEST(HandlerList, HandlersMayComeAndGoWhileTheyAreCalled) {
  HandlerList<void(int)> list;
  std::string calls;
  Subscription leaver, newcomer, itself;
  const auto first = list.add([&](int value) {
    calls += "1";
    leaver.cancel();
    if (!newcomer) newcomer = list.add([&](int) { calls += "n"; });
    if (value > 0) list.notify(value - 1);
  });
  leaver = list.add([&](int) { calls += "never"; });
  itself = list.add([&, kept = std::make_shared<int>(7)](int) {
    itself.cancel();
    calls += std::to_string(*kept);
  });
  list.notify(1);
  EXPECT_EQ(calls, "117n");
  list.notify(0);
  EXPECT_EQ(calls, "117n1n");
}

TEST(HandlerList, AsksTheNewestFirstUntilOneAnswersFalse) {
  HandlerList<bool(int)> list;
  std::string calls;
  const auto oldest = list.add([&](int) {
    calls += "1";
    return true;
  });
  auto leaver = list.add([](int) { return false; });
  const auto newest = list.add([&](int value) {
    calls += "3";
    leaver.cancel();
    return value == 0;
  });
  EXPECT_TRUE(list.newestFirst(0));
  EXPECT_FALSE(list.newestFirst(1));
  EXPECT_EQ(calls, "313");
}

TEST(HandlerList, LetsNothingOutliveItOrDieInside) {
  auto list = std::make_unique<HandlerList<void()>>();
  int calls = 0;
  auto owned = list->add([&] { ++calls; });
  auto owner = list->add([kept = std::make_shared<Subscription>(std::move(owned))] {});
  owner.cancel();
  EXPECT_TRUE(list->isEmpty()) << "a handler may own the subscription of another";

  const auto token = std::make_shared<int>();
  const auto breaker = list->add([&] { list.reset(); });
  auto last = list->add([&, token] { ++calls; });
  list->notify();
  EXPECT_EQ(calls, 1) << "the list may end while it calls";
  EXPECT_EQ(token.use_count(), 1);
  last.cancel();
}

TEST(NotificationCenter, CallsTheObserversOfTheName) {
  NotificationCenter center;
  std::string calls;
  const auto tabs = center.observe("tabs", [&] {
    calls += "t";
    center.post("zones");
  });
  const auto zones = center.observe("zones", [&] { calls += "z"; });
  center.post("tabs");
  center.post("pins");
  EXPECT_EQ(calls, "tz");
}

TEST(Function, OwnsWhatItCalls) {
  auto token = std::make_shared<int>(3);
  Function<int(std::unique_ptr<int>)> add =
      [token, own = std::make_unique<int>(30)](std::unique_ptr<int> other) {
        return *token + *own + *other;
      };
  auto moved = std::move(add);
  EXPECT_FALSE(add);  // NOLINT(bugprone-use-after-move): it is empty then
  EXPECT_EQ(moved(std::make_unique<int>(300)), 333);
  moved = nullptr;
  EXPECT_FALSE(moved);
  EXPECT_EQ(token.use_count(), 1);
}

struct CommaNumbers : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Number, IsTheLongestOneThatTheTextBeginsWithWhateverTheLocale) {
  const std::locale before = std::locale::global({std::locale::classic(), new CommaNumbers});
  const std::vector<std::pair<const char*, std::optional<double>>> texts{{"-2.5e3pt", -2500},
                                                                         {"1234.5", 1234.5},
                                                                         {"1e", 1},
                                                                         {"1e+", 1},
                                                                         {"5.e1", 50},
                                                                         {"12abc", 12},
                                                                         {"0x10", 0},
                                                                         {"1.2.3", 1.2},
                                                                         {".", std::nullopt},
                                                                         {"+-5", std::nullopt},
                                                                         {"e5", std::nullopt},
                                                                         {"inf", std::nullopt},
                                                                         {"", std::nullopt},
                                                                         {"1e999", std::nullopt}};
  for (const auto& [text, number] : texts) EXPECT_EQ(leadingNumber(text), number) << text;
  std::locale::global(before);
}

// Suspends a coroutine until the test opens it.
struct Gate {
  std::coroutine_handle<> waiting;

  bool await_ready() const { return false; }
  void await_suspend(std::coroutine_handle<> handle) { waiting = handle; }
  void await_resume() const {}
  void open() { std::exchange(waiting, nullptr).resume(); }
};

Task<int> answerBehind(Gate& gate, int answer) {
  co_await gate;
  if (answer < 0) throw std::runtime_error("negative");
  co_return answer;
}

TEST(Task, IsLazyAndHandsOnResultsAndExceptions) {
  Gate gate;
  std::string story;
  TaskScope scope([&](std::exception_ptr error) {
    try {
      std::rethrow_exception(error);
    } catch (const std::runtime_error& thrown) {
      story += std::string(", the scope heard ") + thrown.what();
    }
  });
  scope.start([](Gate& door, std::string& told) -> Task<> {
    auto first = answerBehind(door, 41);
    told += "made ";
    told += std::to_string(co_await std::move(first) + 1);
    try {
      co_await answerBehind(door, -1);
    } catch (const std::runtime_error& error) {
      told += std::string(" ") + error.what();
    }
    co_await answerBehind(door, -1);
  }(gate, story));
  EXPECT_EQ(story, "made ");
  gate.open();
  EXPECT_EQ(story, "made 42");
  gate.open();
  EXPECT_EQ(story, "made 42 negative");
  EXPECT_FALSE(scope.isIdle());
  gate.open();
  EXPECT_EQ(story, "made 42 negative, the scope heard negative");
  EXPECT_TRUE(scope.isIdle());
}

Task<> hold(Gate& gate, std::shared_ptr<int> token) {
  co_await answerBehind(gate, *token);
  *token = 2;
}

TEST(TaskScope, EndsItsTasksWhereTheyAreSuspended) {
  Gate one, two;
  const auto token = std::make_shared<int>(1);
  {
    TaskScope scope([](std::exception_ptr) {});
    scope.start(hold(one, token));
    scope.start(hold(two, token));
    EXPECT_GT(token.use_count(), 1);
    scope.cancel();
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_TRUE(scope.isIdle());
    scope.start(hold(one, token));
  }
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_EQ(*token, 1) << "no task went on";
}

}  // namespace
}  // namespace pellow
