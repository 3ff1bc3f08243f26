#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/view.h"

namespace pellow {

// A test that notes what it is told, as lines, and asks for them in their order.
class Hearing : public testing::Test {
 protected:
  // Lets everybody work until `holds()`; false when it does not come true.
  virtual bool until(const std::function<bool()>& holds) = 0;

  std::function<void()> note(const std::string& what) {
    return [this, what] { heard.push_back(what); };
  }
  std::function<void(bool)> noteHover(const std::string& name) {
    return [this, name](bool inside) { heard.push_back((inside ? "into " : "out of ") + name); };
  }
  DragActions noteDrag(const std::string& name) {
    return {.onBegan = note(name + " began"),
            .onDragged =
                [this, name](AppKitVector by) {
                  heard.push_back(fmt::format("{} by {} {}", name, by.dx, by.dy + 0.0));
                },
            .onEnded = note(name + " ended")};
  }

  // Whether exactly these are heard in time, in this order; forgets them afterwards.
  testing::AssertionResult hears(const std::vector<std::string>& expected) {
    const bool came = until([&] { return heard.size() >= expected.size(); });
    const auto all = std::exchange(heard, {});
    if (came && all == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "heard: " << testing::PrintToString(all);
  }

  std::vector<std::string> heard;
};

}  // namespace pellow
