#pragma once

#include <string_view>

// Where the user grants the permissions, for `Workspace::open`.
namespace pellow::PrivacySettings {

inline constexpr std::string_view accessibility =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
inline constexpr std::string_view screenRecording =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";

}  // namespace pellow::PrivacySettings
