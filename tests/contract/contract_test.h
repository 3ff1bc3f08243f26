#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <expected>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "tests/contract/host.h"
#include "tests/harness/hearing.h"

namespace pellow::contract {

// Longer than any answer takes, if it comes at all.
inline constexpr Seconds patience = 6;

class ContractTest : public Hearing {
 protected:
  template <class Value>
  static std::expected<Value, AXError> read(const AXElement& element, std::string_view attribute) {
    const auto value = element.copyAttribute(attribute, patience);
    if (!value) return std::unexpected(value.error());
    return std::get<Value>(*value);
  }

  template <class Value>
  static AXError errorOf(const std::expected<Value, AXError>& answer) {
    return answer ? AXError::success : answer.error();
  }

  bool until(const std::function<bool()>& holds) override { return host->until(holds); }

  // Whether nothing is heard before the main queue has done all that it had to do.
  testing::AssertionResult hearsNothing() {
    const auto last = platform.queues().main().async(note("the last"));
    return hears({"the last"});
  }

  AXElement application(const Guest& guest) {
    return platform.accessibility().application(guest.pid());
  }

  std::vector<AXElement> windows(const Guest& guest) {
    return read<std::vector<AXElement>>(application(guest), AX::attribute::windows)
        .value_or(std::vector<AXElement>());
  }

  AXElement windowNamed(const Guest& guest, std::string_view title) {
    std::optional<AXElement> found;
    until([&] {
      for (const auto& window : windows(guest))
        if (read<std::string>(window, AX::attribute::title) == title) found = window;
      return found.has_value();
    });
    if (!found) throw std::runtime_error("no window has this title");
    return *found;
  }

  testing::AssertionResult bringToFront(const Guest& guest) {
    const auto isFront = [&] { return platform.workspace().frontmostApplication() == guest.pid(); };
    const auto isAsked = [&] {
      return isFront() ||
             application(guest).setAttribute(AX::attribute::frontmost, true, patience).has_value();
    };
    if (!until(isAsked)) return testing::AssertionFailure() << "it refuses to come to the front";
    if (until(isFront)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "it does not come to the front";
  }

  AppKitPoint toAppKit(QuartzPoint point) {
    return {point.x, platform.screens().all().at(0).frame.height() - point.y};
  }
  QuartzPoint toQuartz(AppKitPoint point) {
    return {point.x, platform.screens().all().at(0).frame.height() - point.y};
  }

  const std::unique_ptr<Host> host = Host::make();
  Platform& platform = host->platform();
};

// With other applications, keys and the pointer.
class DesktopContractTest : public ContractTest {
 protected:
  void SetUp() override {
    if (!host->letsUsAct()) GTEST_SKIP() << "Allow this process to use Accessibility first.";
  }
};

}  // namespace pellow::contract
