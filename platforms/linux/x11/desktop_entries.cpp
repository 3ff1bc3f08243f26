#include "platforms/linux/x11/desktop_entries.h"

#include <algorithm>
#include <optional>

#include "platforms/linux/system/desktop_file.h"
#include "platforms/linux/system/environment.h"
#include "platforms/linux/system/user_folders.h"
#include "platforms/linux/x11/text_encoding.h"

namespace pellow {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view extension = ".desktop";

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

// "Name[de_DE]", then "Name[de]", then "Name".
std::string localizedName(const IniGroup& keys, std::string_view locale) {
  const auto country = locale.substr(0, locale.find_first_of(".@"));
  const auto language = country.substr(0, country.find('_'));
  for (const auto tag : {country, language}) {
    const auto found = keys.find("Name[" + std::string(tag) + "]");
    if (!tag.empty() && found != keys.end()) return validUTF8(found->second);
  }
  return validUTF8(value(keys, "Name"));
}

const DesktopEntry* at(const std::map<std::string, const DesktopEntry*>& index,
                       const std::string& name) {
  const auto found = index.find(name);
  return found == index.end() ? nullptr : found->second;
}

}  // namespace

DesktopEntries DesktopEntries::ofEnvironment() {
  auto folders = dataFolders();
  for (auto& folder : folders) folder /= "applications";
  std::string locale = environment("LC_ALL");
  if (locale.empty()) locale = environment("LC_MESSAGES");
  if (locale.empty()) locale = environment("LANG");
  return {std::move(folders), std::move(locale)};
}

const DesktopEntry* DesktopEntries::find(std::string_view instanceName,
                                         std::string_view className) {
  if (!isRead_) read();
  if (const auto* entry = lookUp(instanceName, className)) return entry;
  if (folderTimes() == times_) return nullptr;
  read();
  return lookUp(instanceName, className);
}

const DesktopEntry* DesktopEntries::lookUp(std::string_view instanceName,
                                           std::string_view className) const {
  const std::string names[] = {lowerCase(className), lowerCase(instanceName)};
  for (const auto* index : {&byWindowClass_, &byID_, &byLastPart_})
    for (const auto& name : names)
      if (const auto* entry = at(*index, name)) return entry;
  return nullptr;
}

DesktopEntries::Times DesktopEntries::folderTimes() const {
  Times times;
  for (const auto& folder : folders_) {
    std::error_code error;
    const auto time = fs::last_write_time(folder, error);
    if (!error) times[folder] = time;
  }
  return times;
}

void DesktopEntries::read() {
  isRead_ = true;
  times_ = folderTimes();
  entries_.clear();
  for (const auto& folder : folders_) readFolder(folder);
  buildIndexes();
}

void DesktopEntries::readFolder(const fs::path& folder) {
  std::error_code error;
  auto files = fs::recursive_directory_iterator(
      folder, fs::directory_options::skip_permission_denied, error);
  for (; !error && files != fs::recursive_directory_iterator(); files.increment(error)) {
    const auto& file = files->path();
    if (file.extension() != extension) continue;
    std::string id = file.lexically_relative(folder).string();
    id.resize(id.size() - extension.size());
    std::ranges::replace(id, '/', '-');
    add(std::move(id), file);
  }
}

void DesktopEntries::add(std::string id, const fs::path& file) {
  if (entries_.contains(id)) return;
  const auto keys = readDesktopFile(file);
  if (value(keys, "Type") != "Application" || value(keys, "Hidden") == "true") return;
  DesktopEntry entry{.id = validUTF8(id),
                     .name = localizedName(keys, locale_),
                     .icon = value(keys, "Icon"),
                     .windowClass = value(keys, "StartupWMClass"),
                     .isShown = value(keys, "NoDisplay") != "true"};
  entries_.emplace(std::move(id), std::move(entry));
}

void DesktopEntries::buildIndexes() {
  byWindowClass_.clear();
  byID_.clear();
  byLastPart_.clear();
  // Menu entries first: an application's helper may share its window class.
  for (const bool shown : {true, false}) {
    for (const auto& [id, entry] : entries_) {
      if (entry.isShown != shown) continue;
      const auto name = lowerCase(id);
      if (!entry.windowClass.empty()) byWindowClass_.emplace(lowerCase(entry.windowClass), &entry);
      byID_.emplace(name, &entry);
      if (const auto dot = name.rfind('.'); dot != std::string::npos)
        byLastPart_.emplace(name.substr(dot + 1), &entry);
    }
  }
}

}  // namespace pellow
