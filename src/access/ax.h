#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/geometry.h"
#include "platform/accessibility.h"

// Typed readers of other applications' attributes. Each is one call and answers nothing when that
// fails in any way: an error, no value, a value of another type. They block until the other
// application answers, at most for the element's messaging timeout; any thread.
namespace pellow::AX {

namespace attribute {
inline constexpr std::string_view focusedWindow = "AXFocusedWindow";
inline constexpr std::string_view minimizeButton = "AXMinimizeButton";
inline constexpr std::string_view minimized = "AXMinimized";
inline constexpr std::string_view parent = "AXParent";
inline constexpr std::string_view position = "AXPosition";
inline constexpr std::string_view role = "AXRole";
inline constexpr std::string_view size = "AXSize";
inline constexpr std::string_view subrole = "AXSubrole";
inline constexpr std::string_view title = "AXTitle";
inline constexpr std::string_view windows = "AXWindows";
}  // namespace attribute

namespace role {
inline constexpr std::string_view window = "AXWindow";
}  // namespace role

namespace subrole {
inline constexpr std::string_view minimizeButton = "AXMinimizeButton";
inline constexpr std::string_view standardWindow = "AXStandardWindow";
}  // namespace subrole

namespace action {
inline constexpr std::string_view raise = "AXRaise";
}  // namespace action

// How long an element may take to answer.
namespace timeout {
inline constexpr Seconds systemWide = 0.1;
inline constexpr Seconds application = 0.25;
inline constexpr Seconds windowChange = 5.0;  // worth waiting for, off the main thread
}  // namespace timeout

// What an answer holds, or nothing.
template <class T>
std::optional<T> held(const std::expected<AXValue, AXError>& answer) {
  const auto* const value = answer ? std::get_if<T>(&*answer) : nullptr;
  return value ? std::optional(*value) : std::nullopt;
}

// The element of the whole system, with its short timeout. Whoever asks it again and again (the
// hover trigger) makes it once and keeps it.
AXElement systemWide(Accessibility& accessibility);

// The element of an application, with the timeout for reads that must not stall the interface.
AXElement application(Accessibility& accessibility, ProcessID pid);

std::optional<std::string> string(const AXElement& element, std::string_view attribute);

// True, false, or unknown.
std::optional<bool> boolean(const AXElement& element, std::string_view attribute);

std::optional<AXElement> child(const AXElement& element, std::string_view attribute);

// Empty when there is nothing to read.
std::vector<AXElement> children(const AXElement& element, std::string_view attribute);

// Position and size together.
std::optional<QuartzRect> frame(const AXElement& element);

// The window that the element is, or is in: looks at the element and at most seven ancestors.
std::optional<AXElement> enclosingWindow(const AXElement& element);

}  // namespace pellow::AX
