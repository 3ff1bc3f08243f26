#include "platforms/simulated/files.h"

#include <utility>

namespace pellow::simulated {

void Disk::put(const std::string& path, std::string contents, StoredFile::Kind kind) {
  static constexpr std::int64_t tick = 1'000'000;
  now += tick;
  auto& file = files[path];
  file = {.kind = kind,
          .contents = std::move(contents),
          .stamp = {.modified = now, .identity = file.stamp.identity + 1}};
}

std::optional<std::string> Disk::contents(const std::string& path) const {
  const auto found = files.find(path);
  if (found == files.end() || found->second.kind != StoredFile::Kind::ordinary) return std::nullopt;
  return found->second.contents;
}

bool Files::isFolder(const std::string& path) const {
  const auto found = disk_->files.find(path);
  if (found != disk_->files.end() && found->second.kind == StoredFile::Kind::folder) return true;
  const auto inside = disk_->files.lower_bound(path + '/');
  return path == homeFolder() ||
         (inside != disk_->files.end() && inside->first.starts_with(path + '/'));
}

std::optional<FileStamp> Files::stamp(const std::string& path) const {
  const auto found = disk_->files.find(path);
  return found == disk_->files.end() ? std::nullopt : std::optional(found->second.stamp);
}

std::expected<std::string, SystemError> Files::read(const std::string& path,
                                                    std::size_t limit) const {
  ++disk_->reads;
  auto contents = disk_->contents(path);
  if (!contents || contents->size() > limit)
    return std::unexpected(SystemError{path + " cannot be read."});
  return *std::move(contents);
}

std::expected<FileStamp, SystemError> Files::write(const std::string& path,
                                                   std::string_view contents) {
  if (disk_->isFull) return std::unexpected(SystemError{*disk_->isFull});
  if (isFolder(path)) return std::unexpected(SystemError{path + " is a folder."});
  for (auto slash = path.find('/', 1); slash != path.npos; slash = path.find('/', slash + 1)) {
    const auto parent = path.substr(0, slash);
    if (disk_->files.contains(parent) && !isFolder(parent))
      return std::unexpected(SystemError{parent + " is no folder."});
  }
  ++disk_->writes;
  disk_->put(path, std::string(contents));
  return disk_->files.at(path).stamp;
}

std::expected<void, SystemError> Files::rename(const std::string& from, const std::string& to) {
  const auto found = disk_->files.find(from);
  if (found == disk_->files.end() || isFolder(to))
    return std::unexpected(SystemError{from + " cannot be renamed."});
  disk_->files[to] = std::exchange(found->second, {});
  disk_->files.erase(from);
  return {};
}

}  // namespace pellow::simulated
