#pragma once

#include <gtest/gtest.h>
#include <poll.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platforms/linux/x11/x11_desktop.h"
#include "tests/harness/eventually.h"
#include "tests/harness/test_client.h"

// The X11 adapter's ports with a real window manager, checked from outside.

namespace pellow::desktop {

// Longer than any answer takes, if it comes at all.
inline constexpr Seconds patience = 6;

template <class Value>
std::expected<Value, AXError> read(const AXElement& element, std::string_view attribute,
                                   Seconds timeout = patience) {
  const auto value = element.copyAttribute(attribute, timeout);
  if (!value) return std::unexpected(value.error());
  return std::get<Value>(*value);
}

template <class Value>
AXError errorOf(const std::expected<Value, AXError>& answer) {
  return answer ? AXError::success : answer.error();
}

class X11DesktopTest : public testing::Test {
 protected:
  explicit X11DesktopTest(DesktopOptions options = {}) : desktop(std::move(options)) {}

  using Opened = std::expected<std::unique_ptr<X11Desktop>, SystemError>;

  Opened open(const std::string& display, double scale = 1) {
    X11Desktop::Hooks hooks{.loadIcon = [](const std::string&) { return std::nullopt; },
                            .ownWindowHasKeyboard = [this](auto) { return ownWindowHasKeyboard; }};
    return X11Desktop::open(display, scale, std::move(hooks), log);
  }

  // Handles events until `holds()`; asks again only after something has happened.
  bool until(const std::function<bool()>& holds) {
    return eventually([&] {
      pollfd poller{x11->fileDescriptor(), POLLIN, 0};
      poll(&poller, 1, 10);
      return x11->processEvents() && holds();
    });
  }

  static std::vector<AXElement> windows(X11Desktop& of, ProcessID process) {
    const auto found =
        read<std::vector<AXElement>>(of.accessibility().application(process), "AXWindows");
    return found.value_or(std::vector<AXElement>{});
  }

  // Waits until the window manager has listed it.
  static AXElement windowNamed(X11Desktop& of, ProcessID process, std::string_view title) {
    std::optional<AXElement> found;
    const auto isListed = [&] {
      for (auto& window : windows(of, process))
        if (read<std::string>(window, "AXTitle") == title) found = std::move(window);
      return found.has_value();
    };
    if (!eventually(isListed)) throw std::runtime_error("no window has this title");
    return *found;
  }

  void move(const AXElement& window, double x, double y) {
    ASSERT_TRUE(window.setAttribute("AXPosition", QuartzPoint{x, y}, patience));
    EXPECT_EQ(read<QuartzPoint>(window, "AXPosition"), (QuartzPoint{x, y}));
  }

  DesktopSession desktop;
  bool ownWindowHasKeyboard = false;
  Log log{[](LogLevel, std::string_view message) { ADD_FAILURE() << message; }};
  std::unique_ptr<X11Desktop> x11 = open(desktop.display()).value();
  TestClient client{desktop};
  const ProcessID pid = client.process().pid();
};

}  // namespace pellow::desktop
