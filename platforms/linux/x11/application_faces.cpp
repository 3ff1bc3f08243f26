#include "platforms/linux/x11/application_faces.h"

#include <algorithm>
#include <fstream>

#include "platforms/linux/x11/application_windows.h"
#include "platforms/linux/x11/pixel_image.h"
#include "platforms/linux/x11/text_encoding.h"

namespace pellow {

namespace {

// What stands for applications without a picture of their own.
constexpr const char* anyApplicationIcon = "application-x-executable";

std::string commandName(ProcessID pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
  std::string name;
  std::getline(file, name);
  return validUTF8(name);
}

template <class Name>
std::optional<std::string> nonEmpty(const Name& name) {
  return name.empty() ? std::nullopt : std::optional<std::string>(name);
}

}  // namespace

RunningApplication ApplicationFaces::describe(ProcessID pid,
                                              const std::vector<WindowFacts>& windows) {
  const auto ordinary = std::ranges::find_if(windows, isInTaskbar);
  const auto& face = ordinary != windows.end() ? *ordinary : windows.front();
  const auto* entry = entries_.find(face.instanceName, face.className);
  const auto windowClass = nonEmpty(face.className);
  // Another process of the program, which is an agent whatever it shows.
  const bool isAgent = face.className == "pellow" || ordinary == windows.end();
  return {.pid = pid,
          .bundleID = entry ? entry->id : windowClass,
          .localizedName =
              entry && !entry->name.empty() ? entry->name : windowClass.value_or(commandName(pid)),
          .icon = icon(entry, pid, face.window),
          .activationPolicy = isAgent ? ActivationPolicy::accessory : ActivationPolicy::regular};
}

std::optional<Image> ApplicationFaces::icon(const DesktopEntry* entry, ProcessID pid,
                                            xcb_window_t window) {
  if (entry && !entry->icon.empty())
    if (auto image = themeIcon(entry->icon)) return image;
  if (const auto known = windowIcons_.find(pid); known != windowIcons_.end()) return known->second;
  const auto facts =
      WindowLook(server_, server_.connection(), window, Facet::icon).collect(server_.patience());
  const auto image =
      facts ? PixelImage::fromIconProperty(facts->icon, server_.layout().scale) : std::nullopt;
  if (!image) return themeIcon(anyApplicationIcon);
  windowIcons_.emplace(pid, *image);
  return image;
}

std::optional<Image> ApplicationFaces::themeIcon(const std::string& name) {
  const auto known = themeIcons_.find(name);
  if (known != themeIcons_.end()) return known->second;
  auto image = loadIcon_ ? loadIcon_(name) : std::nullopt;
  return themeIcons_.emplace(name, std::move(image)).first->second;
}

}  // namespace pellow
