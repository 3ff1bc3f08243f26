#pragma once

#include <string_view>

// What Accessibility calls things.
namespace pellow::AX {

namespace attribute {
inline constexpr std::string_view children = "AXChildren";
inline constexpr std::string_view focusedApplication = "AXFocusedApplication";
inline constexpr std::string_view focusedWindow = "AXFocusedWindow";
inline constexpr std::string_view frontmost = "AXFrontmost";
inline constexpr std::string_view hidden = "AXHidden";
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
inline constexpr std::string_view application = "AXApplication";
inline constexpr std::string_view button = "AXButton";
inline constexpr std::string_view group = "AXGroup";
inline constexpr std::string_view systemWide = "AXSystemWide";
inline constexpr std::string_view window = "AXWindow";
}  // namespace role

namespace subrole {
inline constexpr std::string_view dialog = "AXDialog";
inline constexpr std::string_view floatingWindow = "AXFloatingWindow";
inline constexpr std::string_view minimizeButton = "AXMinimizeButton";
inline constexpr std::string_view standardWindow = "AXStandardWindow";
inline constexpr std::string_view unknown = "AXUnknown";
}  // namespace subrole

namespace action {
inline constexpr std::string_view press = "AXPress";
inline constexpr std::string_view raise = "AXRaise";
}  // namespace action

namespace notification {
inline constexpr std::string_view elementDestroyed = "AXUIElementDestroyed";
inline constexpr std::string_view focusedWindowChanged = "AXFocusedWindowChanged";
inline constexpr std::string_view windowMiniaturized = "AXWindowMiniaturized";
}  // namespace notification

}  // namespace pellow::AX
