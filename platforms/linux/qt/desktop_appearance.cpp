#include "platforms/linux/qt/desktop_appearance.h"

#include <QApplication>
#include <QStyle>
#include <algorithm>
#include <ranges>
#include <string>
#include <string_view>
#include <utility>

#include "platforms/linux/qt/hairline_style.h"
#include "platforms/linux/system/ini_file.h"
#include "platforms/linux/system/user_folders.h"

namespace pellow {
namespace {

// Without a theme for this desktop, Qt takes the palette of its plainest style as it is.
bool hasColoursOfItsOwn() {
  const auto* const style = QApplication::style();
  return style->name() != "fusion" || QApplication::palette() != style->standardPalette();
}

std::string lowered(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return result;
}

// "Adwaita-dark", "Adwaita:dark", "Mint-Y-Dark-Aqua", "HighContrastInverse".
bool isDarkTheme(std::string_view themeName) {
  auto name = lowered(themeName);
  if (name.ends_with("inverse")) return true;
  std::ranges::replace_if(name, [](char letter) { return letter == ':' || letter == '_'; }, '-');
  return ("-" + name + "-").find("-dark-") != std::string::npos;
}

}  // namespace

DesktopAppearance::DesktopAppearance() : isOurs_(!hasColoursOfItsOwn()) {
  if (!isOurs_) return;
  QApplication::setStyle(new HairlineStyle);
  choose();
}

bool DesktopAppearance::isDark() const {
  if (const auto told = portal_.isDark()) return *told;
  const auto file = readIniGroup(configurationFolder() / "gtk-3.0" / "settings.ini", "Settings");
  const auto prefersDark = lowered(value(file, "gtk-application-prefer-dark-theme"));
  if (prefersDark == "1" || prefersDark == "true") return true;
  return isDarkTheme(theme_.name().empty() ? value(file, "gtk-theme-name") : theme_.name());
}

void DesktopAppearance::choose() {
  if (!isOurs_) return;
  const ApplicationColours colours{.areDark = isDark(), .accent = portal_.accent()};
  if (std::exchange(shown_, colours) != colours) colours.apply();
}

}  // namespace pellow
