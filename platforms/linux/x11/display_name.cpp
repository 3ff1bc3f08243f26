#include "platforms/linux/x11/display_name.h"

#include <fmt/format.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace pellow {

std::string canonicalDisplayName(const std::string& name) {
  char* hostText = nullptr;
  int display = 0;
  int screen = 0;
  if (!xcb_parse_display(name.c_str(), &hostText, &display, &screen)) return name;
  const std::unique_ptr<char, decltype(&std::free)> owned(hostText, std::free);
  const std::string_view host = hostText;
  auto canonical = fmt::format("{}:{}", host == "unix" ? "" : host, display);
  if (screen != 0) canonical += fmt::format(".{}", screen);
  return canonical;
}

}  // namespace pellow
