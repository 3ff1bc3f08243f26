#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/geometry.h"
#include "platform/accessibility.h"

// Typed readers of other applications' attributes. Each is one call and answers nothing if that
// fails in any way: an error, no value, a value of another type. Any thread; blocks until the other
// application answers, for the timeout at most.
namespace pellow::AX {

// How long a call may take.
namespace timeout {
inline constexpr Seconds systemWide = 0.1;
inline constexpr Seconds application = 0.25;  // must not stall the interface
inline constexpr Seconds windowChange = 5.0;  // worth waiting for, off the main thread
}  // namespace timeout

// The value in an answer, if it is a T.
template <class T>
std::optional<T> held(const std::expected<AXValue, AXError>& answer) {
  const auto* const value = answer ? std::get_if<T>(&*answer) : nullptr;
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::string> string(const AXElement& element, std::string_view attribute,
                                  Seconds timeout);

// True, false, or unknown.
std::optional<bool> boolean(const AXElement& element, std::string_view attribute, Seconds timeout);

std::optional<AXElement> child(const AXElement& element, std::string_view attribute,
                               Seconds timeout);

// Empty when there is nothing to read.
std::vector<AXElement> children(const AXElement& element, std::string_view attribute,
                                Seconds timeout);

// Position and size together.
std::optional<QuartzRect> frame(const AXElement& element, Seconds timeout);

// The window that the element is or is in: looks at the element and at most seven ancestors;
// `timeout` is for each of them.
std::optional<AXElement> enclosingWindow(const AXElement& element, Seconds timeout);

}  // namespace pellow::AX
