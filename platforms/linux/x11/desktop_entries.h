#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace pellow {

// What a desktop file says about an application.
struct DesktopEntry {
  std::string id;    // the file's name without ".desktop", for example "org.gnome.TextEditor"
  std::string name;  // in the user's language
  std::string icon;  // a name of the icon theme or a path; may be empty
  std::string windowClass;  // StartupWMClass; may be empty
  bool isShown = true;      // in menus

  bool operator==(const DesktopEntry&) const = default;
};

// The applications that are installed. They are read at the first look-up, and again when one finds
// nothing and the folders have changed. Main thread.
class DesktopEntries {
 public:
  // Earlier folders win. `locale` is like "de_DE.UTF-8".
  DesktopEntries(std::vector<std::filesystem::path> folders, std::string locale)
      : folders_(std::move(folders)), locale_(std::move(locale)) {}

  // With the folders and the locale of the environment.
  static DesktopEntries ofEnvironment();

  // The application whose windows have this WM_CLASS: by StartupWMClass, by the name of the file,
  // or by the last part of a name like "org.gnome.TextEditor"; null when none fits. Valid until the
  // next look-up.
  const DesktopEntry* find(std::string_view instanceName, std::string_view className);

 private:
  using Times = std::map<std::filesystem::path, std::filesystem::file_time_type>;
  using Index = std::map<std::string, const DesktopEntry*>;  // by a name in lower case

  const DesktopEntry* lookUp(std::string_view instanceName, std::string_view className) const;
  void read();
  void readFolder(const std::filesystem::path& folder);
  void add(std::string id, const std::filesystem::path& file);
  void buildIndexes();
  Times folderTimes() const;

  std::vector<std::filesystem::path> folders_;
  std::string locale_;
  bool isRead_ = false;
  Times times_;
  std::map<std::string, DesktopEntry> entries_;  // by id
  Index byWindowClass_;
  Index byID_;
  Index byLastPart_;
};

}  // namespace pellow
